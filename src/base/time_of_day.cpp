#include "base/time_of_day.h"

#include "base/ascii.h"

namespace corvane {
namespace {

// All of the text as a number of one or two digits, below `bound`.
std::optional<int> number(std::string_view text, int bound) {
  if (text.empty() || text.size() > 2) return std::nullopt;
  int value = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') return std::nullopt;
    value = value * 10 + (digit - '0');
  }
  return value < bound ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<int> minutesOfDay(std::string_view text) {
  text = trimmed(text);
  const auto colon = text.find(':');
  if (colon == std::string_view::npos || text.size() - colon != 3) return std::nullopt;
  const auto hours = number(text.substr(0, colon), 24);
  const auto minutes = number(text.substr(colon + 1), 60);
  if (!hours || !minutes) return std::nullopt;
  return *hours * 60 + *minutes;
}

}  // namespace corvane
