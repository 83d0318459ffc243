// The machine's two clocks.
#pragma once

#include "platform/clock.h"

namespace corvane {

class SystemClock final : public Clock {
 public:
  [[nodiscard]] Date now() const override;
  [[nodiscard]] SteadyTime steadyNow() const override;
};

}  // namespace corvane
