// The loop of the real machine, for tests of what it drives.
#pragma once

#include <functional>

#include "base/lease.h"
#include "platform/posix/system_clock.h"
#include "platform/uv/uv_main_loop.h"

namespace corvane::testing {

constexpr Duration kPatience = 30s;  // a failing test's, never a passing one's

struct RealClock {
  SystemClock real;
};

class RealLoop : RealClock, public UvMainLoop {
 public:
  RealLoop() : UvMainLoop(real) {}

  [[nodiscard]] const Clock& clock() const { return real; }

  // Looks again every few milliseconds: nothing in the loop tells of other processes.
  bool wait(const std::function<bool()>& done) {
    const auto tick = mainQueue().every(5ms, [] {});
    return pump(done, kPatience);
  }
  // Events of files are in the kernel's queue when a change returns, so one look and what it posts will do.
  void look() {
    for (int i = 0; i < 4; ++i) turn();
  }
};

}  // namespace corvane::testing
