// Whether an application needs an update, as every list, count and pass has it. Pure.
#pragma once

#include <optional>

#include "base/date.h"
#include "core/policies/label_history.h"
#include "core/preferences/configuration.h"
#include "core/records/app_info.h"

namespace corvane {

// What is asked, taken once for many applications.
struct UpdateNeedFacts {
  const CorvaneConfiguration& config;
  bool reinstallsCurrentRequiredApps = false;  // by the configured options
  const LabelInstallHistory::History& installs;
  std::optional<Date> cycleStart;
};

// `excluded`: a copy of the App Store that the options leave alone.

// A required application that is current, and is installed again once a cycle because the options say so.
[[nodiscard]] bool isForcedReinstallPending(const AppInfo& app, bool excluded, const UpdateNeedFacts& facts);

// Never with another team's signature. An application that is not there is needed when it is required.
[[nodiscard]] bool needsUpdate(const AppInfo& app, bool excluded, const UpdateNeedFacts& facts);

}  // namespace corvane
