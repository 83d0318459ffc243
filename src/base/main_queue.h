// Where all model state, scheduling and answers live: one thread, one turn after the other.
#pragma once

#include "base/date.h"
#include "base/lease.h"
#include "base/task.h"

namespace corvane {

// Contract suite: tests/base/main_queue_contract.h. Everything but `post` and `isMainThread` is called
// on the main thread only.
class MainQueue {
 public:
  virtual ~MainQueue() = default;

  // Any thread. First in, first out, never inline.
  virtual void post(Task task) = 0;

  // Once, `delay` of steady time from now; at most `leeway` later. A delay below zero counts as zero.
  virtual Lease after(Duration delay, Task task, Duration leeway = Duration::zero()) = 0;

  // Again and again, first after one `interval`. Firings that were missed are not made up for.
  virtual Lease every(Duration interval, std::move_only_function<void()> task, Duration leeway = Duration::zero()) = 0;

  // Once, when wall time has reached `date`. Looks again on wake and when the clock was set.
  virtual Lease at(Date date, Task task) = 0;

  // Any thread.
  [[nodiscard]] virtual bool isMainThread() const = 0;
};

}  // namespace corvane
