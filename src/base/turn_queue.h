// Posts and timers in their one order. It never waits: whoever drives it does (libuv, Qt's loop through
// libuv, or virtual time), so the order that tests prove is the order that runs.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "base/main_queue.h"

namespace corvane {

// The two clocks a turn queue reads. Both are called on the main thread.
struct TurnClock {
  std::function<SteadyTime()> steady;
  std::function<Date()> wall;
};

class TurnQueue final : public MainQueue {
 public:
  // `wake` is called from any thread when there is something to do sooner than the driver believes.
  TurnQueue(TurnClock clock, std::function<void()> wake);
  ~TurnQueue() override;

  void post(Task task) override;
  Lease after(Duration delay, Task task, Duration leeway) override;
  Lease every(Duration interval, std::move_only_function<void()> task, Duration leeway) override;
  Lease at(Date date, Task task) override;
  [[nodiscard]] bool isMainThread() const override;

  // Runs what is ready: first all posts made before the call, then the timers that are due, in the
  // order (due, armed); posts made by a timer run before the next timer. Gives whether anything ran.
  bool runReady();

  // How long the driver may wait: zero when posts stand ready, absent when nothing is armed. Wall-time
  // alarms are looked at no later than a minute from now, so that a set clock is noticed. With leeway used,
  // alarms that allow it wait for one another.
  enum class Leeway { unused, used };
  [[nodiscard]] std::optional<Duration> timeToNext(Leeway leeway = Leeway::unused) const;

  // True while posts wait to run.
  [[nodiscard]] bool hasPosts() const { return posted_; }

 private:
  struct Timer {
    TurnQueue* queue = nullptr;  // null once that is gone
    bool wall = false;
    Duration interval{};  // zero: once
    Duration leeway{};
    std::move_only_function<void()> task;
    SteadyTime steadyDue{};
    Date wallDue{};
    std::uint64_t id = 0;  // the order of arming
    bool cancelled = false;
  };
  using SteadyKey = std::pair<SteadyTime, std::uint64_t>;
  using WallKey = std::pair<Date, std::uint64_t>;
  struct Instant {
    SteadyTime steady;
    Date wall;
  };

  Lease arm(const std::shared_ptr<Timer>& timer);
  void enqueue(const std::shared_ptr<Timer>& timer);
  void dequeue(const Timer& timer);
  void cancel(Timer& timer);
  bool runPosts();
  std::shared_ptr<Timer> takeDue(const Instant& now, std::uint64_t armedBefore);
  void fire(const std::shared_ptr<Timer>& timer, SteadyTime now);

  TurnClock clock_;
  std::function<void()> wake_;
  std::thread::id mainThread_;
  mutable std::mutex postsMutex_;
  std::vector<Task> posts_;
  std::atomic<bool> posted_ = false;  // some stand in posts_; set and cleared with the mutex held, read without
  std::uint64_t nextId_ = 1;
  std::vector<Task> spare_;  // empty; the room of the posts that ran last, for the next ones
  bool running_ = false;     // the driver asks for the next wait afterwards, so nobody needs to wake it
  std::map<SteadyKey, std::shared_ptr<Timer>> steadyTimers_;
  std::map<WallKey, std::shared_ptr<Timer>> wallTimers_;
};

}  // namespace corvane
