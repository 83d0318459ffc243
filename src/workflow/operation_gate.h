// The gate that lets one long operation run at a time, and the work that waits for it. It knows nothing of
// what the operations are about.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>

#include "base/lifeline.h"
#include "base/main_queue.h"
#include "workflow/status_fields.h"

namespace corvane {

// Main thread. Every write of a flag looks at the idle work, so no transition can forget to.
class OperationGate {
 public:
  // `changed` is called after each write of `fields`.
  OperationGate(MainQueue& main, GateFields& fields, std::function<void()> changed)
      : main_(main), fields_(fields), changed_(std::move(changed)) {}

  // What every guarded entry tests: a flag is set, or a run of this process has not answered. The run counts
  // beside the flags, since the end of a helper's pass clears the shown state of a background run of ours.
  [[nodiscard]] bool busy() const { return fields_.isLoading || fields_.isPatching || ownRunOut_; }

  // A patch run is shown, or one of this process has not answered.
  [[nodiscard]] bool patching() const { return fields_.isPatching || ownRunOut_; }

  void setLoading(bool loading);
  void setPatching(bool patching);
  void setOperation(std::optional<DiscoveryOperation> operation);
  void setHelperPassOwnsPatchingState(bool owns);

  // A run of this process went out, or answered. Two at once are a bug of ours.
  void ownRunStarted();
  void ownRunAnswered();
  // How many runs of this process were started so far: tells whether one was set off in between.
  [[nodiscard]] std::uint64_t ownRunsStarted() const { return ownRunsStarted_; }

  // Queues work for the next idle moment and drains when that is now; the drain is a turn of its own.
  void whenIdle(Task work);
  // Runs `work` within this turn when the gate is idle, else queues it.
  void nowOrWhenIdle(Task work);
  // Drains the queue in a later turn when the gate is idle: first in, first out, until one sets the gate.
  void scheduleIdleWork();

 private:
  void drain();

  MainQueue& main_;
  GateFields& fields_;
  std::function<void()> changed_;
  std::deque<Task> idleWork_;
  bool idleWorkScheduled_ = false;
  bool ownRunOut_ = false;
  std::uint64_t ownRunsStarted_ = 0;
  Lifeline lifeline_;
};

}  // namespace corvane
