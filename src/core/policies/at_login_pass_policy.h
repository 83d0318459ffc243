// Whether the background pass after a login is still to run. Decides only.
#pragma once

#include <chrono>
#include <optional>

#include "base/date.h"

namespace corvane {

struct AtLoginPassPolicy {
  // Long enough for a machine that boots slowly or waits for its network, short enough that the pass is
  // still felt as part of logging in.
  static constexpr std::chrono::seconds window{15 * 60};

  // True when the login is known, lies at most `window` back, and is not the one that `lastHandled` names
  // (the login time of the session whose pass has run; equal within a second).
  [[nodiscard]] static bool shouldRun(std::optional<Date> loginTime, std::optional<Date> lastHandled, Date now) {
    if (!loginTime || now < *loginTime || now - *loginTime > window) return false;
    return !lastHandled || !sameSecond(*lastHandled, *loginTime);
  }
};

}  // namespace corvane
