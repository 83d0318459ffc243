// What this Linux system calls itself.
#pragma once

#include <string>

namespace corvane {

// "Debian GNU/Linux 12 (bookworm), Linux 6.1.0-18-amd64": for people, nothing to compare. Any thread.
[[nodiscard]] std::string systemVersion();

}  // namespace corvane
