// When work that goes on in intervals begins anew after a start of the program.
#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

#include "base/date.h"

namespace corvane {

// A program that has just started lets the machine settle first.
inline constexpr std::chrono::seconds kLeastFirstDelay{300};

// What is left of `interval` since `last`, and at least kLeastFirstDelay; that alone when nothing is left or nothing
// was ever done. A `last` ahead of now, of a clock that was set back since, counts as now.
[[nodiscard]] inline std::chrono::seconds firstDelay(std::optional<Date> last, Date now,
                                                     std::chrono::seconds interval) {
  if (!last) return kLeastFirstDelay;
  const auto passed = std::chrono::floor<std::chrono::seconds>(std::max(now - *last, Duration::zero()));
  return std::max(interval - passed, kLeastFirstDelay);
}

}  // namespace corvane
