// How many cells of a terminal a text takes. Pure functions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvane::ctl {

// Two cells for wide characters of East Asia and pictures, none for marks that join the one before, one for all
// others and for each byte that is no UTF-8.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

// The text, or as much of it as leaves a cell for the "…" behind it.
[[nodiscard]] std::string elided(std::string_view text, std::size_t width);

}  // namespace corvane::ctl
