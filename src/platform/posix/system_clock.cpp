#include "platform/posix/system_clock.h"

#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <limits>

namespace corvane {

namespace {

Duration read(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::chrono::duration_cast<Duration>(std::chrono::seconds(time.tv_sec) +
                                              std::chrono::nanoseconds(time.tv_nsec));
}

// It never runs out; the kernel cancels it when the wall clock jumps, as it does on wake.
int openJumps() {
  const int descriptor = ::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
  if (descriptor < 0) return -1;
  itimerspec never{};
  never.it_value.tv_sec = std::numeric_limits<time_t>::max();
  if (::timerfd_settime(descriptor, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr) == 0)
    return descriptor;
  ::close(descriptor);
  return -1;
}

}  // namespace

SystemClock::SystemClock() : jumps_(openJumps()) {}

SystemClock::~SystemClock() {
  if (jumps_ >= 0) ::close(jumps_);
}

Date SystemClock::now() const { return Date(read(CLOCK_REALTIME)); }

// CLOCK_MONOTONIC stands still while the machine sleeps.
SteadyTime SystemClock::steadyNow() const { return SteadyTime(read(CLOCK_MONOTONIC)); }

}  // namespace corvane
