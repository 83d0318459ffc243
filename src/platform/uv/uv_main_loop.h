// The main queue of the programs that have no window: libuv waits, a turn queue runs. Holds no policy.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "base/main_queue.h"
#include "platform/clock.h"

struct uv_loop_s;

namespace corvane {

// Belongs to the thread that makes it, which becomes the main thread. The other libuv adapters hang their
// handles on loop() and close them before this dies; what they hear, they hear inside a turn. Whoever
// posts from other threads (a work queue) must be gone before.
class UvMainLoop {
 public:
  // Does not return when the machine denies the descriptors that a loop needs; it says why on standard error.
  // `clockJumps` becomes readable when the wall clock was set or the machine woke, and outlives the loop; without one
  // (-1) that is noticed within a minute.
  explicit UvMainLoop(const Clock& clock, int clockJumps = -1);
  ~UvMainLoop();
  UvMainLoop(const UvMainLoop&) = delete;
  UvMainLoop& operator=(const UvMainLoop&) = delete;

  [[nodiscard]] MainQueue& mainQueue();
  [[nodiscard]] uv_loop_s* loop();

  // Runs turns until quit(); gives its code. A quit() from before the call counts. Never nested.
  int run();

  // Main thread. Ends run() after the current turn.
  void quit(int code);

  // For batch jobs, at top level only: runs turns until `done` holds, asked after each turn, or `limit` of
  // steady time has passed. Gives whether `done` holds; quit() ends it early.
  bool pump(const std::function<bool()>& done, Duration limit);

  // For an outer loop that waits itself: one turn that does not wait, the descriptor that becomes readable
  // when a turn is due, and how long it may wait at most (absent: until then). The last is asked after each turn.
  void turn();
  [[nodiscard]] int pollableDescriptor() const;
  [[nodiscard]] std::optional<Duration> waitAtMost() const;

  // The code that quit() was called with; absent before.
  [[nodiscard]] std::optional<int> quitCode() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace corvane
