// The broadcasts inside the process, each a plain struct; the strings are their names in logs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/date.h"
#include "core/records/app_info.h"

namespace corvane {

struct CorvaneSettingsDidChange {
  static constexpr std::string_view name = "Corvane.SettingsDidChange";
};
struct CorvaneDidBecomeActive {
  static constexpr std::string_view name = "Corvane.DidBecomeActive";
};
struct CorvaneClosedAppsPatchRequested {
  static constexpr std::string_view name = "Corvane.ClosedAppsPatchRequested";
};
struct CorvaneHelperPassStarted {
  static constexpr std::string_view name = "Corvane.HelperPassStarted";
  std::string runID;
  Date startedAt;
  std::int64_t totalLabels = 0;
  std::optional<std::string> currentLabel;
  std::optional<std::string> currentLabelDisplayName;
};
struct CorvaneHelperPassProgress {
  static constexpr std::string_view name = "Corvane.HelperPassProgress";
  std::string runID;
  std::int64_t totalLabels = 0;
  std::int64_t completedCount = 0;
  std::optional<std::string> currentLabel;
  std::optional<std::string> currentLabelDisplayName;
};
struct CorvaneHelperPassEnded {
  static constexpr std::string_view name = "Corvane.HelperPassEnded";
  std::string runID;
};
struct CorvaneHelperPassCompleted {
  static constexpr std::string_view name = "Corvane.HelperPassCompleted";
  Labels labels;
  std::string runID;
  Date completedAt;
  bool hasFailures = false;
};
struct CorvaneScheduledDiscoveryCompleted {
  static constexpr std::string_view name = "Corvane.ScheduledDiscoveryCompleted";
  std::string runID;
  Date completedAt;
  std::int64_t appCount = 0;
  std::int64_t pendingUpdateCount = 0;
};
struct ShowDeferralPromptFromNotification {
  static constexpr std::string_view name = "Corvane.ShowDeferralPromptFromNotification";
};
struct CorvaneNextAutoLaunchDidChange {
  static constexpr std::string_view name = "Corvane.NextAutoLaunchDidChange";
};

}  // namespace corvane
