// The background pass over applications that nobody uses: whether it may begin, and which labels it takes. Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/date.h"
#include "core/policies/label_history.h"
#include "core/policies/running_bundles.h"
#include "core/preferences/configuration.h"
#include "core/records/app_info.h"

namespace corvane {

// What is taken at the machine when a pass is to begin.
struct PassConditions {
  bool toolReady = false;
  bool cycleComplete = false;
  bool onACPower = false;
};

// Why no pass may begin now, for the log; absent when one may.
[[nodiscard]] std::optional<std::string> passObjection(const CorvaneConfiguration& config,
                                                       const PassConditions& conditions);

struct PassFacts {
  CorvaneConfiguration config;
  std::optional<Date> cycleStart;
  LabelFailureHistory::Records failures;
  LabelInstallHistory::History installs;
  LabelSet storeCopies;  // whose bundle holds a receipt of the App Store
  RunningBundles running;
};

// The application needs an update, as the application's own lists count it: neither a foreign team's nor a copy of the
// App Store that the options leave alone, and its check did not fail.
[[nodiscard]] bool isPending(const AppInfo& app, const PassFacts& facts);

// Left alone after repeated failures, in this cycle and for the version known now.
[[nodiscard]] bool isHeld(const AppInfo& app, const PassFacts& facts);

struct PassDecision {
  Labels install;                  // closed, in the order of the applications
  Labels stage;                    // all that is pending, open or closed; empty while staging is off
  std::vector<std::string> notes;  // what was left out for being open or of unknown state, for the log
  friend bool operator==(const PassDecision&, const PassDecision&) = default;
};
[[nodiscard]] PassDecision decidePass(const Apps& apps, const PassFacts& facts);

}  // namespace corvane
