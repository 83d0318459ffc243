// Which pending applications are certainly closed, so that they may be patched without a word. A pure decision.
#pragma once

#include <string>
#include <vector>

#include "core/policies/running_bundles.h"
#include "core/records/app_info.h"
#include "workflow/app_facts.h"

namespace corvane {

struct ClosedApps {
  struct Remark {
    std::string text;
    bool isWarning = false;
  };

  Labels labels;                   // to be patched, in the order of the inventory
  std::vector<std::string> names;  // theirs
  Labels pending;                  // of all that need an update, open or closed
  std::vector<Remark> remarks;     // why installed ones were left out
};

// An installed application counts as closed when it has a path or an identifier on file and neither is running; one
// without either is left alone, for nothing could certify it. A required one that is not installed has nothing to
// close. The block list wins over the allow list; an empty allow list allows all.
[[nodiscard]] ClosedApps certifyClosedApps(const Apps& apps, const AppFacts& facts, const RunningBundles& running);

// The pass over closed applications is this process's own, by the settings.
[[nodiscard]] bool patchesClosedAppsInApp(const CorvaneConfiguration& config);

}  // namespace corvane
