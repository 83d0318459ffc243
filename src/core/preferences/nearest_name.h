// What somebody may have meant who wrote a name that is none, and what may be shown of such a name.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace corvane {

// Runs its argument once for each name.
using Names = std::function<void(const std::function<void(std::string_view)>&)>;

// The name with the fewest letters to change, add, take away or swap, case aside; the first of equals. Empty when
// none is near: more than a quarter of the letters would have to change, or the text is too long to be a name.
[[nodiscard]] std::string nearestName(std::string_view text, const Names& names);

// On one line and cut to what a reader can take in; bytes that are no text and control characters become U+FFFD.
[[nodiscard]] std::string shown(std::string_view text);

}  // namespace corvane
