// The entry of the flow that asks the user about all pending updates.
#pragma once

#include "workflow/status_fields.h"

namespace corvane {

// Main thread.
class UpdateAllEntry {
 public:
  virtual ~UpdateAllEntry() = default;
  // Rechecks what is pending and shows the prompt on `host` when something is left.
  virtual void updateAll(DeferralPromptHost host) = 0;
};

}  // namespace corvane
