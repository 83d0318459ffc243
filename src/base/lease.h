// The one handle of everything that goes on until told otherwise: timers, subscriptions, watches.
#pragma once

#include <functional>
#include <utility>

namespace corvane {

// Move-only. When a lease dies or is released, what it stands for is cancelled: a cancelled task never
// runs afterwards, not even when it was due. An empty lease does nothing. Main thread only, unless the
// giver says otherwise.
class [[nodiscard]] Lease {
 public:
  Lease() = default;
  explicit Lease(std::move_only_function<void()> cancel) : cancel_(std::move(cancel)) {}
  Lease(Lease&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  Lease& operator=(Lease&& other) noexcept {
    if (this != &other) {
      release();
      cancel_ = std::exchange(other.cancel_, nullptr);
    }
    return *this;
  }
  ~Lease() { release(); }

  void release() {
    if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
  }
  [[nodiscard]] bool active() const { return static_cast<bool>(cancel_); }

 private:
  std::move_only_function<void()> cancel_;
};

}  // namespace corvane
