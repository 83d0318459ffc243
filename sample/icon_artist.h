// Icons for the sample's applications, drawn from their names: a rounded tile with a simple figure on it.
#pragma once

#include <string>
#include <string_view>

namespace corvane::sample {

// A Mac's icon file (".icns") with a picture of 64 pixels.
[[nodiscard]] std::string iconFor(std::string_view name);

}  // namespace corvane::sample
