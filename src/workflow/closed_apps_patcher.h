// Who patches applications that are closed, quietly, when the workflow asks for it.
#pragma once

#include "base/task.h"

namespace corvane {

// `failed` and `succeeded`: a run took place. `helperPassRunning`: the helper is at it already.
enum class ClosedAppsOutcome { failed, succeeded, notRun, helperPassRunning };

// Main thread.
class ClosedAppsPatcher {
 public:
  virtual ~ClosedAppsPatcher() = default;
  // Answers once, on the main queue, perhaps within the call.
  virtual void patchClosedApps(Completion<ClosedAppsOutcome> done) = 0;
};

}  // namespace corvane
