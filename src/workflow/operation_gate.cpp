#include "workflow/operation_gate.h"

#include <cassert>

namespace corvane {

void OperationGate::setLoading(bool loading) {
  fields_.isLoading = loading;
  changed_();
  scheduleIdleWork();
}

void OperationGate::setPatching(bool patching) {
  fields_.isPatching = patching;
  changed_();
  scheduleIdleWork();
}

void OperationGate::setOperation(std::optional<DiscoveryOperation> operation) {
  fields_.currentOperation = operation;
  changed_();
}

void OperationGate::setHelperPassOwnsPatchingState(bool owns) {
  fields_.helperPassOwnsPatchingState = owns;
  changed_();
}

void OperationGate::ownRunStarted() {
  assert(!ownRunOut_ && "two patch runs of this process at once");
  ownRunOut_ = true;
  ++ownRunsStarted_;
}

void OperationGate::ownRunAnswered() {
  ownRunOut_ = false;
  scheduleIdleWork();
}

void OperationGate::whenIdle(Task work) {
  idleWork_.push_back(std::move(work));
  scheduleIdleWork();
}

void OperationGate::nowOrWhenIdle(Task work) {
  if (busy())
    whenIdle(std::move(work));
  else
    work();
}

void OperationGate::scheduleIdleWork() {
  if (idleWork_.empty() || busy() || idleWorkScheduled_) return;
  idleWorkScheduled_ = true;
  main_.post(lifeline_.guard([this] { drain(); }));
}

void OperationGate::drain() {
  idleWorkScheduled_ = false;
  while (!idleWork_.empty() && !busy()) {
    auto work = std::move(idleWork_.front());
    idleWork_.pop_front();
    work();
  }
}

}  // namespace corvane
