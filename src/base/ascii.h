// ASCII text: letters without regard to case, and blanks. All other bytes stay as they are.
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

// Without blanks and line ends at either side.
[[nodiscard]] constexpr std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n\v\f";
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace corvane
