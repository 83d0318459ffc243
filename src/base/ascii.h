// Letters of ASCII without regard to case, and all other bytes as they are.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace corvane {

[[nodiscard]] constexpr char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

[[nodiscard]] inline std::string lowercased(std::string text) {
  std::ranges::transform(text, text.begin(), lowered);
  return text;
}

[[nodiscard]] inline bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lowered, lowered);
}

}  // namespace corvane
