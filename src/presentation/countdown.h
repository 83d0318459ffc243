// A countdown to a moment of wall time, told every second and fired once. It knows no window: no part of a deadline
// waits for one.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "base/date.h"
#include "base/lease.h"
#include "base/main_queue.h"
#include "platform/clock.h"

namespace corvane {

// Main thread. A clock that is set back while it runs puts the end off, one set forward brings it on: nothing happens
// before the moment that was shown.
class Countdown {
 public:
  // `tick` when the shown seconds have changed, `elapsed` once at the end; neither within start().
  Countdown(MainQueue& main, const Clock& clock, std::function<void()> tick, std::function<void()> elapsed)
      : main_(main), clock_(clock), tick_(std::move(tick)), elapsed_(std::move(elapsed)) {}

  // Replaces a running one; less than a second counts as one.
  void start(std::int64_t seconds);
  void stop();
  [[nodiscard]] bool running() const { return endsAt_.has_value(); }
  // Begun seconds that remain; 0 when it does not run.
  [[nodiscard]] std::int64_t remainingSeconds() const;

 private:
  void wait();
  void look();

  MainQueue& main_;
  const Clock& clock_;
  std::function<void()> tick_;
  std::function<void()> elapsed_;
  std::optional<Date> endsAt_;
  Lease next_;
};

// "0:04:59": hours, minutes, seconds.
[[nodiscard]] std::string countdownText(std::int64_t seconds);

}  // namespace corvane
