// What pending updates lead to, step by step, decided from facts. Nothing here reads a store or starts work.
#pragma once

#include <cstdint>
#include <optional>

#include "base/date.h"
#include "core/records/app_info.h"
#include "workflow/closed_apps_patcher.h"

namespace corvane {

// The first step, where the settings want it: downloads before anything else.
enum class StagingStep {
  skip,     // nothing to download, or downloaded already
  wait,     // the request for these very labels is out, and its answer goes on
  request,  // supersedes a request for other labels
};
struct StagingFacts {
  const LabelSet& labels;
  const std::optional<LabelSet>& inFlight;
  const std::optional<LabelSet>& staged;
};
[[nodiscard]] StagingStep decideStaging(const StagingFacts& facts);

// The second: one pass over closed applications for each set of them.
enum class ClosedAppsStep { startPass, deliver, deliverWithoutRetry };
struct ClosedAppsFacts {
  bool mayStart = false;  // settings and power allow it, somebody does it, and the gate is idle
  const LabelSet& closed;
  const std::optional<LabelSet>& attempted;
};
[[nodiscard]] ClosedAppsStep decideClosedApps(const ClosedAppsFacts& facts);

// What an ended pass leads to.
enum class AfterPass {
  deliverHandledElsewhere,  // by the helper's own pass
  deliverAfreshLook,        // it did not run, perhaps for want of power
  waitForRefresh,           // the counts of the refresh that runs deliver
  deliver,
};
[[nodiscard]] AfterPass decideAfterPass(ClosedAppsOutcome outcome, bool isLoading);

// The third: what the user hears and sees of the open ones.
struct NewsFacts {
  std::int64_t open = 0;
  std::int64_t notified = 0;  // of how many the user knows
  Date now{};
  std::optional<Date> armed;  // NextAutoLaunch
  bool stageUpdates = false;  // by the settings
  bool allStaged = false;
  bool notificationsEnabled = false;
  bool isActive = false;
  bool showsPrompt = false;
  bool cycleComplete = false;
};
// A notification is due, so what it tells of is downloaded first.
[[nodiscard]] bool shouldStageBeforeNotification(const NewsFacts& facts);
[[nodiscard]] bool shouldPresentDeferralDialog(const NewsFacts& facts);

}  // namespace corvane
