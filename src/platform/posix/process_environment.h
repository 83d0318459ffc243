// The environment that this process was started with and has changed since.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace corvane {

// For children that are to live in the same session. Main thread, since anything that sets a variable races with it.
[[nodiscard]] std::vector<std::pair<std::string, std::string>> processEnvironment();

}  // namespace corvane
