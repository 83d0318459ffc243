// The alarm of an object that looks at something again and again, first after a delay of its own.
#pragma once

#include <functional>
#include <utility>

#include "base/main_queue.h"

namespace corvane {

// Main thread. A start replaces the one before; dying ends it.
class RepeatingTimer {
 public:
  explicit RepeatingTimer(MainQueue& main) : main_(main) {}

  struct Pace {
    Duration first;
    Duration interval;
    Duration leeway;
  };
  void start(const Pace& pace, std::function<void()> call) {
    lease_ = main_.after(
        pace.first,
        [this, pace, call = std::move(call)]() mutable {
          const auto now = call;
          lease_ = main_.every(pace.interval, std::move(call), pace.leeway);
          now();
        },
        pace.leeway);
  }
  void stop() { lease_ = {}; }

 private:
  MainQueue& main_;
  Lease lease_;
};

}  // namespace corvane
