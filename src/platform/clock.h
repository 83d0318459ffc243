// Time as the machine tells it.
#pragma once

#include "base/date.h"

namespace corvane {

// Any thread; both answer at once.
class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual Date now() const = 0;
  [[nodiscard]] virtual SteadyTime steadyNow() const = 0;
};

}  // namespace corvane
