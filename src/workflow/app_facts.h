// What the predicates on applications are asked with, taken once before a pass over many of them. It holds
// values and shared caches, reads nothing by itself but the store receipt of a bundle.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>

#include "base/date.h"
#include "core/history/label_history_caches.h"
#include "core/policies/label_history.h"
#include "core/preferences/configuration.h"
#include "core/records/app_info.h"
#include "core/records/history_records.h"

namespace corvane {

struct AppFacts {
  SharedConfiguration config{std::make_shared<const CorvaneConfiguration>()};
  bool replacesAppStoreApps = false;           // by the configured options
  bool reinstallsCurrentRequiredApps = false;  // by the configured options
  std::optional<Date> cycleStart;
  bool cycleComplete = false;  // the published message, or a freshly computed one
  LabelSet clearedLabels;
  LabelFailureHistory::Records failures;
  LabelInstallHistory::History installs;
  // For each label with failures, the latest version known of its first application.
  using FailureTargets = std::unordered_map<Label, std::optional<std::string>>;
  FailureTargets failureTargets;
  std::shared_ptr<const LatestReceipts> latestReceipts;
  // Whether the application's bundle holds a receipt of the App Store.
  std::function<bool(const AppInfo&)> hasAppStoreReceipt;
};

}  // namespace corvane
