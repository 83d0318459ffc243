// Whether the retry that a failed Update All armed is still to be waited for.
#pragma once

#include <optional>

#include "base/date.h"

namespace corvane {

enum class ErrorRetryState { inactive, wait, elapsed };

struct ErrorRetryWatch {
  // Not armed is inactive; armed with the next launch in the future is wait; armed with it absent or reached
  // is elapsed.
  [[nodiscard]] static constexpr ErrorRetryState evaluate(bool armed, std::optional<Date> nextAutoLaunch, Date now) {
    if (!armed) return ErrorRetryState::inactive;
    return nextAutoLaunch && *nextAutoLaunch > now ? ErrorRetryState::wait : ErrorRetryState::elapsed;
  }
};

}  // namespace corvane
