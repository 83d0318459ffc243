#include "presentation/countdown.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace corvane {

void Countdown::start(std::int64_t seconds) {
  endsAt_ = clock_.now() + std::chrono::seconds(std::max<std::int64_t>(seconds, 1));
  wait();
}

void Countdown::stop() {
  endsAt_.reset();
  next_ = {};
}

std::int64_t Countdown::remainingSeconds() const {
  if (!endsAt_) return 0;
  return std::max<std::int64_t>(std::chrono::ceil<std::chrono::seconds>(*endsAt_ - clock_.now()).count(), 0);
}

// Until the next whole second of what remains, so that none is left out when a turn comes late.
void Countdown::wait() {
  const auto left = *endsAt_ - clock_.now();
  const auto next = left - std::chrono::seconds(std::max<std::int64_t>(remainingSeconds() - 1, 0));
  next_ = main_.after(std::clamp<Duration>(next, Duration::zero(), 1s), [this] { look(); });
}

void Countdown::look() {
  if (*endsAt_ > clock_.now()) {
    wait();
    return tick_();
  }
  stop();
  elapsed_();
}

std::string countdownText(std::int64_t seconds) {
  return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

}  // namespace corvane
