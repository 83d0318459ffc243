// The machine's two clocks.
#pragma once

#include "platform/clock.h"

namespace corvane {

class SystemClock final : public Clock {
 public:
  SystemClock();
  ~SystemClock() override;
  SystemClock(const SystemClock&) = delete;
  SystemClock& operator=(const SystemClock&) = delete;

  [[nodiscard]] Date now() const override;
  [[nodiscard]] SteadyTime steadyNow() const override;

  // A descriptor that becomes readable when the wall clock jumped: it was set, or the machine woke. Reading it once
  // takes that back. -1 where the machine has none to give. It closes with this.
  [[nodiscard]] int jumps() const { return jumps_; }

 private:
  int jumps_ = -1;
};

}  // namespace corvane
