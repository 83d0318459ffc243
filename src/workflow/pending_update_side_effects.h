// What pending updates set off: staging, then the closed applications, then the notification and prompt for
// what stayed open. The workflow tells when; what happens is told behind this interface.
#pragma once

namespace corvane {

// Main thread. Both may start work of the model at once, in the middle of the flow that recomputed the counts.
class PendingUpdateSideEffects {
 public:
  virtual ~PendingUpdateSideEffects() = default;

  // Counts were recomputed with nothing under way: the start of the sequence.
  virtual void runPendingUpdateSideEffects() = 0;

  // The last step: the user hears of what is left. `closedAppsHandledElsewhere`: another process patches the
  // closed applications; `closedAppsWaitForACPower`: they wait for the power adapter.
  virtual void deliverDeferral(bool closedAppsHandledElsewhere, bool closedAppsWaitForACPower) = 0;
};

}  // namespace corvane
