// Finds out which release a build of the program's own label is, so that its row can show it.
#pragma once

#include "core/policies/self_update_version_display.h"
#include "workflow/self_update_display.h"

namespace corvane {

// Main thread. What it is given outlives it.
class SelfUpdateLookup final : public SelfUpdateDisplay {
 public:
  explicit SelfUpdateLookup(SelfUpdateVersionDisplay::Services services) : services_(services) {}
  void lookUp(const Apps& apps) override;

 private:
  SelfUpdateVersionDisplay::Services services_;
};

}  // namespace corvane
