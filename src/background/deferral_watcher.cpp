#include "background/deferral_watcher.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "base/localized.h"
#include "core/policies/deferral_manager.h"
#include "core/policies/error_retry_watch.h"
#include "core/records/notifications.h"

namespace corvane {

DeferralWatcher::DeferralWatcher(StatusViewModel& model, const WorkflowServices& services)
    : model_(model), services_(services), log_(services.log, "DeferralWatcher"), ticks_(services.main) {
  armedChanges_ = services_.notifications.observe<CorvaneNextAutoLaunchDidChange>(
      [this](const auto&) { services_.main.post(lifeline_.guard([this] { armWatchpointFromNextAutoLaunch(); })); });
}

void DeferralWatcher::start() {
  stop();
  if (reconcileCycle().isNew) rediscover();
  ticks_.start({.first = kFirstTick, .interval = kTickInterval, .leeway = kTickLeeway}, [this] { tick(); });
  if (!pendingCadenceResetDiscovery_) armWatchpointFromNextAutoLaunch();
  log_.info("Started — interval=60s, firstTick=30s");
}

void DeferralWatcher::stop() {
  ticks_.stop();
  watchpoint_ = {};
}

void DeferralWatcher::armWatchpoint(Date date, std::string_view reason) {
  const auto left = std::max(date - services_.clock.now(), Duration::zero());
  watchpoint_ = services_.main.at(date, [this] { watchpointElapsed(); });
  log_.info(
      fmt::format("Armed watchpoint in {}s ({}).", std::chrono::floor<std::chrono::seconds>(left).count(), reason));
}

void DeferralWatcher::armWatchpointFromNextAutoLaunch() {
  const auto armed = services_.preferences.readNextAutoLaunch();
  if (armed)
    armWatchpoint(*armed, "NextAutoLaunch");
  else
    watchpoint_ = {};
}

void DeferralWatcher::watchpointElapsed() {
  watchpoint_ = {};
  if (tick() != TickResult::busy) return;
  log_.info("Watchpoint elapsed during a check or patch — retrying in 15s.");
  armWatchpoint(services_.clock.now() + kBusyRetry, "busy retry");
}

DeferralWatcher::Cycle DeferralWatcher::reconcileCycle() {
  auto& store = services_.preferences;
  const auto stored = store.moment();
  Cycle cycle{.config = stored->config};
  const auto calendar = services_.locale.calendar();
  const auto now = services_.clock.now();
  const PatchingCadenceManager cadence(cycle.config, calendar);
  const bool testAnchor =
      stored->config->adminTestModeEnabled && store.readPreference("AdminTestModeAnchorOverrideActive", false);
  const auto decision = decideCycle(stored->cadence, cadence, now, testAnchor);
  if (decision.isWarning)
    log_.warning(decision.logLine);
  else if (!decision.logLine.empty())
    log_.info(decision.logLine);
  DeferralManager deferrals(cycle.config, store, services_.clock, calendar);
  if (decision.resetDeferrals) {
    deferrals.resetDeferralCounts();
    store.clearUpdateAllErrorClearedLabels();
  }
  if (decision.write) store.writePatchingCadenceState(*decision.write);
  cycle.isNew = decision.newCycle;
  const auto& state = decision.write ? *decision.write : stored->cadence;
  if (state.currentPatchingStartDate)
    deferrals.seedDeadlineDatesFromAnchor(*state.currentPatchingStartDate, state.nextCycleStartDate);
  model_.refreshDeadlineDisplay();
  return cycle;
}

void DeferralWatcher::rediscover() {
  if (!model_.isIdle()) {
    pendingCadenceResetDiscovery_ = true;
    log_.info("Cadence reset rediscovery deferred — check/patch in flight; retrying in 15s.");
    return armWatchpoint(services_.clock.now() + kBusyRetry, "cadence-reset rediscovery busy retry");
  }
  pendingCadenceResetDiscovery_ = false;
  log_.info("Cadence reset — running immediate discovery + update check (full notify/dialog path).");
  model_.checkForUpdates();
}

DeferralWatcher::TickResult DeferralWatcher::tick() {
  const auto cycle = reconcileCycle();
  if (cycle.isNew || pendingCadenceResetDiscovery_) {
    rediscover();
    return pendingCadenceResetDiscovery_ ? TickResult::busy : TickResult::engaged;
  }
  const CorvaneConfiguration& config = cycle.config;
  auto& store = services_.preferences;
  const auto stored = store.moment();
  if (isCycleComplete(config, stored->cadence)) {
    settleCompleteCycle();
    return TickResult::idle;
  }
  const auto now = services_.clock.now();
  switch (ErrorRetryWatch::evaluate(stored->patchErrorRetryArmed, stored->nextAutoLaunch, now)) {
    case ErrorRetryState::wait:
      return TickResult::idle;
    case ErrorRetryState::elapsed:
      store.clearPatchErrorRetryArmed();
      break;
    case ErrorRetryState::inactive:
      break;
  }
  armMissedEnforcement(config, stored->lastHardDeadlineFiredAt);
  const auto settled = store.moment();
  const auto status =
      DeferralManager(config, store, services_.clock, services_.locale.calendar()).checkDeadlines(*settled);
  const DueFacts facts{.status = status,
                       .armed = settled->nextAutoLaunch,
                       .dismissedUntil = settled->hardDeadlineDialogDismissedUntil,
                       .showsPrompt = model_.fields().deferral.showDeferralPrompt,
                       .now = now};
  const bool mayDefer = status != DeferralDeadlineStatus::hardDeadlineReached && (!facts.armed || isArmedDue(facts));
  if (mayDefer && deferredByFocus(config)) return TickResult::engaged;
  if (!wantsUser(facts)) return TickResult::idle;
  if (!model_.isIdle()) return TickResult::busy;
  if (model_.fields().inventory.pendingUpdates == 0) return nothingPending();
  return engage(status, facts.armed, config);
}

bool DeferralWatcher::isCycleComplete(const CorvaneConfiguration& config, const CadenceState& state) const {
  return PatchingCadenceManager(config, services_.locale.calendar())
      .isPatchingCompleteForCurrentCycle(state, services_.clock.now());
}

void DeferralWatcher::settleCompleteCycle() {
  auto& store = services_.preferences;
  if (store.readNextAutoLaunch() || store.readPatchErrorRetryArmed()) {
    log_.info("Patching is complete for this cycle; not starting another attempt.");
    store.clearNextAutoLaunch();
  }
  model_.refreshDeadlineDisplay();
}

void DeferralWatcher::armMissedEnforcement(const CorvaneConfiguration& config, std::optional<Date> firedAt) {
  auto& store = services_.preferences;
  const auto calendar = services_.locale.calendar();
  const auto missed = missedEnforcement(
      firedAt, BusinessHoursGate(config.businessHoursStartTime, config.businessHoursEndTime, calendar),
      services_.clock.now(), calendar);
  if (!missed) return;
  log_.info(missed->logLine);
  store.writeNextAutoLaunch(missed->target, false, false);
  store.clearLastHardDeadlineFiredAt();
  model_.setStatusMessage(localized("Updates required — installing in 1 hour."));
}

bool DeferralWatcher::deferredByFocus(const CorvaneConfiguration& config) {
  const auto& fields = model_.fields();
  const auto pending = fields.inventory.pendingUpdates;
  if (pending == 0 || fields.deferral.showDeferralPrompt || !model_.isIdle() ||
      !model_.applyAutomaticFocusDeferralIfNeeded())
    return false;
  if (fields.deferral.focusRecheckSuppressedDialog) {
    log_.info("Display assertion check inconclusive; dialog hidden until the recheck.");
  } else if (config.focusDeferralNotificationsEnabled) {
    services_.notices.notifyDeferralEnded(pending);
    log_.info("Automatic focus deferral; dialog hidden, toast posted.");
  } else {
    log_.info("Automatic focus deferral; dialog and toast suppressed.");
  }
  return true;
}

DeferralWatcher::TickResult DeferralWatcher::nothingPending() {
  if (model_.completeSatisfiedDeferralCycleIfNeeded()) return TickResult::idle;
  if (services_.preferences.readNextAutoLaunch()) {
    log_.info("No pending updates remain; clearing stale watchpoint.");
    services_.preferences.clearNextAutoLaunch();
  }
  return TickResult::idle;
}

DeferralWatcher::TickResult DeferralWatcher::engage(DeferralDeadlineStatus status, std::optional<Date> armed,
                                                    const CorvaneConfiguration& config) {
  model_.refreshHelperState(true);
  const auto& helper = model_.fields().helper;
  if (!helper.helperOperational || !helper.installomatorAvailable) {
    log_.info(fmt::format(
        "Tick skipped — helper or Installomator not ready (helperOperational={}, installomatorAvailable={}).",
        helper.helperOperational, helper.installomatorAvailable));
    return TickResult::busy;
  }
  const auto calendar = services_.locale.calendar();
  std::string reason;
  if (status == DeferralDeadlineStatus::hardDeadlineReached) {
    const auto info = DeferralManager(config, services_.preferences, services_.clock, calendar).getDeferralInfo();
    const auto trigger =
        info.hardDeadlineTrigger(config.deadlineCountHard,
                                 config.deadlineDaysHard ? info.hardDeferralDate : std::nullopt, services_.clock.now());
    reason = fmt::format(", trigger={}", trigger ? rawName(*trigger) : "unspecified");
  }
  log_.info(fmt::format(
      "Deadline trigger fired (status={}{}, NextAutoLaunch={}) with {} pending update(s); engaging updateAll().",
      rawName(status), reason, armed ? calendar.iso8601(*armed) : "<none>", model_.fields().inventory.pendingUpdates));
  announce(status, config);
  model_.updateAll(DeferralPromptHost::standalone);
  return TickResult::engaged;
}

void DeferralWatcher::announce(DeferralDeadlineStatus status, const CorvaneConfiguration& config) {
  using Presentation = DeferralManager::ResumePresentation;
  switch (DeferralManager::resumePresentation(status, false)) {
    case Presentation::foregroundPrompt:
      return log_.info(fmt::format(
          "Deadline status {} — presenting the standalone prompt; leaving the dashboard closed.", rawName(status)));
    case Presentation::silent:
      return log_.info(
          "Focus deadline reached while the user is in Focus/Do Not Disturb — not interrupting; updateAll() will "
          "record "
          "a suppression and re-arm.");
    case Presentation::notification:
      if (isCycleComplete(config, services_.preferences.readPatchingCadenceState()))
        log_.info("Patching is complete for this cycle; not posting a new-update notification.");
      else if (!services_.application.isActive() && config.updatesAvailableNotificationsEnabled)
        services_.notices.notifyDeferralEnded(model_.fields().inventory.pendingUpdates);
  }
}

}  // namespace corvane
