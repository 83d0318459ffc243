#include "background/helper_background_patch_observer.h"

#include <fmt/format.h>

#include <chrono>
#include <utility>

#include "background/background_notices.h"
#include "core/records/notifications.h"

namespace corvane {

using std::chrono::seconds;

HelperBackgroundPatchObserver::HelperBackgroundPatchObserver(const BackgroundServices& services)
    : services_(services),
      log_(services.workflow.log, "HelperBackgroundPatchObserver"),
      timer_(services.workflow.main),
      lastObservedRunID_(services.workflow.preferences.readLastObservedHelperPatchRunID()) {}

void HelperBackgroundPatchObserver::start() {
  timer_.stop();
  const auto config = services_.workflow.preferences.loadConfiguration();
  if (config->backgroundPatchClosedAppsScheduler != BackgroundPatchSchedulerMode::helperDaemon)
    return endInFlight("helper scheduler is no longer selected");
  seed(config->backgroundPatchClosedAppsNotifyOnCompletion);
  schedule(kIdlePoll);
  log_.info("Polling helper state at 60s intervals (adaptive: 5s when a pass is in flight).");
}

void HelperBackgroundPatchObserver::seed(bool notify) {
  if (lastObservedRunID_) return;
  const auto state = services_.helperState.read();
  if (!state || !state->lastBackgroundPatchSummary) return;
  const auto& summary = *state->lastBackgroundPatchSummary;
  const auto age = ageOf(summary.completedAt);
  remember(summary.runID);
  if (age > kFresh)
    return log_.info(
        fmt::format("Seeded last-observed runID {} silently (pass completed {}s ago, outside the 600s seed window).",
                    summary.runID, age.count()));
  log_.info(
      fmt::format("Discovered fresh helper pass on startup (runID {}, completed {}s ago); posting notification "
                  "and refresh signal.",
                  summary.runID, age.count()));
  completed(summary, notify);
}

void HelperBackgroundPatchObserver::schedule(seconds interval) {
  currentInterval_ = interval;
  const Duration leeway = interval >= 30s ? Duration(interval) / 4 : Duration(500ms);
  timer_.start({.first = interval, .interval = interval, .leeway = leeway}, [this] { poll(); });
}

void HelperBackgroundPatchObserver::poll() {
  const auto config = services_.workflow.preferences.loadConfiguration();
  if (config->backgroundPatchClosedAppsScheduler != BackgroundPatchSchedulerMode::helperDaemon) {
    endInFlight("helper scheduler is no longer selected");
    return timer_.stop();
  }
  const bool notify = config->backgroundPatchClosedAppsNotifyOnCompletion;
  const auto state = services_.helperState.read().value_or(HelperPatchState());
  observe(state.currentRun, notify);
  if (const auto& summary = state.lastBackgroundPatchSummary; summary && summary->runID != lastObservedRunID_) {
    remember(summary->runID);
    completed(*summary, notify);
  }
  const bool inFlight = state.isBackgroundPassActive(services_.workflow.clock.now(), kStale);
  const auto wanted = inFlight ? kBusyPoll : kIdlePoll;
  if (wanted == currentInterval_) return;
  log_.info(fmt::format("Adjusting poll cadence to {}s (in-flight: {}).", wanted.count(), inFlight));
  schedule(wanted);
}

void HelperBackgroundPatchObserver::observe(const std::optional<HelperBackgroundCurrentRun>& run, bool notify) {
  if (!run) {
    endInFlight("no pass in flight");
    lastProgressFingerprint_.reset();
    return;
  }
  if (const auto age = ageOf(run->startedAt); age > kStale) {
    log_.warning(fmt::format("Ignoring stale currentRun {} (age {}s > 3600s gate).", run->runID, age.count()));
    return endInFlight("the in-flight record went stale");
  }
  if (startedRunID_ && *startedRunID_ != run->runID) endInFlight("a new pass replaced it");
  if (!startedRunID_) return began(*run, notify);
  ProgressFingerprint fingerprint{.runID = run->runID,
                                  .completedCount = run->completedCount,
                                  .currentLabel = run->currentLabel,
                                  .currentLabelDisplayName = run->currentLabelDisplayName};
  if (fingerprint == lastProgressFingerprint_) return;
  lastProgressFingerprint_ = std::move(fingerprint);
  services_.workflow.notifications.post(
      CorvaneHelperPassProgress{.runID = run->runID,
                                .totalLabels = run->totalLabels,
                                .completedCount = run->completedCount,
                                .currentLabel = run->currentLabel,
                                .currentLabelDisplayName = run->currentLabelDisplayName});
}

void HelperBackgroundPatchObserver::began(const HelperBackgroundCurrentRun& run, bool notify) {
  startedRunID_ = run.runID;
  lastProgressFingerprint_.reset();
  services_.workflow.notifications.post(
      CorvaneHelperPassStarted{.runID = run.runID,
                               .startedAt = run.startedAt,
                               .totalLabels = run.totalLabels,
                               .currentLabel = run.currentLabel,
                               .currentLabelDisplayName = run.currentLabelDisplayName});
  log_.info(fmt::format("Posted .corvaneHelperPassStarted for runID {} (totalLabels={}, currentLabel={}).", run.runID,
                        run.totalLabels, run.currentLabel.value_or("<nil>")));
  if (!notify || ageOf(run.startedAt) > kFresh) return;
  if (const auto notice = helperPassStartedNotice(run))
    tell(*notice, warningOnFailure(log_, "Failed to deliver starting notification"));
}

void HelperBackgroundPatchObserver::endInFlight(std::string_view reason) {
  const auto ended = std::exchange(startedRunID_, std::nullopt);
  if (!ended) return;
  log_.info(fmt::format("Pass {} is no longer in flight ({}).", *ended, reason));
  services_.workflow.notifications.post(CorvaneHelperPassEnded{.runID = *ended});
}

void HelperBackgroundPatchObserver::remember(const std::string& runID) {
  lastObservedRunID_ = runID;
  services_.workflow.preferences.writeLastObservedHelperPatchRunID(runID);
}

void HelperBackgroundPatchObserver::completed(const BackgroundPatchSummary& summary, bool notify) {
  auto& world = services_.workflow;
  if (notify) {
    if (const auto notice = helperPassEndedNotice(summary))
      tell(*notice, [log = log_, runID = summary.runID](const Status& delivered) {
        if (delivered)
          log.info(fmt::format("Posted completion notification for runID {}.", runID));
        else
          log.warning("Failed to deliver completion notification: " + delivered.error().text);
      });
    else
      log_.info(fmt::format("Pass {} installed nothing; skipping the completion notification.", summary.runID));
  }
  world.notifications.post(CorvaneHelperPassCompleted{.labels = summary.labels,
                                                      .runID = summary.runID,
                                                      .completedAt = summary.completedAt,
                                                      .hasFailures = summary.hasFailures});
  log_.info(fmt::format("Posted .corvaneHelperPassCompleted for runID {} (labels: {}, failures: {}).", summary.runID,
                        summary.labels.size(), summary.failureCount));
  if (summary.patchedCount > 0)
    world.signals.send({.name = "Corvane.Patching.Background.completed",
                        .parameters = {},
                        .floatValue = static_cast<double>(summary.patchedCount)});
}

void HelperBackgroundPatchObserver::tell(const NotificationContent& notice, Delivered delivered) {
  services_.router.post(notice, *services_.workflow.preferences.loadConfiguration(), std::move(delivered));
}

seconds HelperBackgroundPatchObserver::ageOf(Date moment) const {
  return std::chrono::floor<seconds>(services_.workflow.clock.now() - moment);
}

}  // namespace corvane
