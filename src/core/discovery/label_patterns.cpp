#include "core/discovery/label_patterns.h"

#include <algorithm>

#include "base/ascii.h"

namespace corvane {
bool matchesLabelPattern(std::string_view pattern, std::string_view text) {
  pattern = trimmed(pattern);
  if (pattern.empty()) return false;
  // Greedy with one point to fall back to: after a later "*" no earlier one has to be tried again.
  std::size_t at = 0;
  std::size_t letter = 0;
  std::size_t starAt = std::string_view::npos;
  std::size_t starLetter = 0;
  while (letter < text.size()) {
    if (at < pattern.size() && pattern[at] == '*') {
      starAt = at++;
      starLetter = letter;
    } else if (at < pattern.size() && (pattern[at] == '?' || lowered(pattern[at]) == lowered(text[letter]))) {
      ++at;
      ++letter;
    } else if (starAt != std::string_view::npos) {
      at = starAt + 1;
      letter = ++starLetter;
    } else {
      return false;
    }
  }
  while (at < pattern.size() && pattern[at] == '*') ++at;
  return at == pattern.size();
}

bool matchesAnyLabelPattern(const std::vector<std::string>& patterns, std::string_view text) {
  return std::ranges::any_of(patterns, [&](const auto& pattern) { return matchesLabelPattern(pattern, text); });
}

}  // namespace corvane
