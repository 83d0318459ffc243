#include "background/helper_scheduled_discovery_observer.h"

#include <fmt/format.h>

#include <chrono>

#include "core/records/notifications.h"

namespace corvane {

HelperScheduledDiscoveryObserver::HelperScheduledDiscoveryObserver(const BackgroundServices& services)
    : services_(services),
      log_(services.workflow.log, "HelperScheduledDiscoveryObserver"),
      timer_(services.workflow.main),
      lastObservedRunID_(services.workflow.preferences.readLastObservedScheduledDiscoveryRunID()) {}

void HelperScheduledDiscoveryObserver::start() {
  seed();
  timer_.start({.first = kPoll, .interval = kPoll, .leeway = 15s}, [this] { poll(); });
  log_.info("Polling helper scheduled-discovery state every 60s.");
}

void HelperScheduledDiscoveryObserver::seed() {
  if (lastObservedRunID_) return;
  const auto state = services_.helperState.read();
  if (!state || !state->lastScheduledDiscoverySummary) return;
  const auto& summary = *state->lastScheduledDiscoverySummary;
  remember(summary.runID);
  const auto age = std::chrono::floor<std::chrono::seconds>(services_.workflow.clock.now() - summary.completedAt);
  if (age <= kFresh) return post(summary);
  log_.info(fmt::format("Seeded last-observed runID {} silently (completed {}s ago).", summary.runID, age.count()));
}

void HelperScheduledDiscoveryObserver::poll() {
  const auto state = services_.helperState.read();
  if (!state || !state->lastScheduledDiscoverySummary) return;
  const auto& summary = *state->lastScheduledDiscoverySummary;
  if (summary.runID == lastObservedRunID_) return;
  remember(summary.runID);
  post(summary);
}

void HelperScheduledDiscoveryObserver::remember(const std::string& runID) {
  lastObservedRunID_ = runID;
  services_.workflow.preferences.writeLastObservedScheduledDiscoveryRunID(runID);
}

void HelperScheduledDiscoveryObserver::post(const ScheduledDiscoverySummary& summary) {
  log_.info(fmt::format("Posted .corvaneScheduledDiscoveryCompleted for runID {} (apps: {}, pending: {}).",
                        summary.runID, summary.appCount, summary.pendingUpdateCount));
  services_.workflow.notifications.post(
      CorvaneScheduledDiscoveryCompleted{.runID = summary.runID,
                                         .completedAt = summary.completedAt,
                                         .appCount = summary.appCount,
                                         .pendingUpdateCount = summary.pendingUpdateCount});
}

}  // namespace corvane
