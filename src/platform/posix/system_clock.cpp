#include "platform/posix/system_clock.h"

#include <time.h>

namespace corvane {

namespace {

Duration read(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::chrono::duration_cast<Duration>(std::chrono::seconds(time.tv_sec) +
                                              std::chrono::nanoseconds(time.tv_nsec));
}

}  // namespace

Date SystemClock::now() const { return Date(read(CLOCK_REALTIME)); }

// CLOCK_MONOTONIC stands still while the machine sleeps.
SteadyTime SystemClock::steadyNow() const { return SteadyTime(read(CLOCK_MONOTONIC)); }

}  // namespace corvane
