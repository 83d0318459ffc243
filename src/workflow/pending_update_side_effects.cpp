#include "workflow/pending_update_side_effects.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "base/localized.h"
#include "core/records/notifications.h"

namespace corvane {

namespace {

constexpr int kStagingFailed = 2;
constexpr auto kStaging = toLocalize("Staging updates…");

Labels listOf(const LabelSet& labels) { return {labels.begin(), labels.end()}; }

std::int64_t sizeOf(const auto& container) { return static_cast<std::int64_t>(container.size()); }

// A run of the helper in which a download failed is no success either.
Status outcomeOf(const Result<PatchRunAnswer>& answer) {
  if (!answer) return std::unexpected(answer.error());
  if (!answer->success) return failure(XPCError::domain, kStagingFailed, answer->message);
  return {};
}

}  // namespace

void PendingUpdateSideEffects::pendingUpdatesCounted() {
  switch (fields_.openAppsNotificationGate) {
    case OpenAppsNotificationGate::idle:
      return runPendingUpdateSideEffects();
    case OpenAppsNotificationGate::patchingClosedApps:
      return;
    case OpenAppsNotificationGate::refreshThenNotify:
      return deliverNow("Closed-app pass finished; delivering the deferral.");
  }
}

void PendingUpdateSideEffects::refreshFailed() {
  if (fields_.openAppsNotificationGate == OpenAppsNotificationGate::refreshThenNotify)
    deliverNow("Post-patch refresh failed; delivering the deferral.");
}

void PendingUpdateSideEffects::forgetStagedLabels() {
  ++fields_.openAppsNotifyStageGeneration;
  fields_.openAppsNotifyStageLabels.reset();
  fields_.labelsStagedBeforeDeferral.reset();
}

void PendingUpdateSideEffects::runPendingUpdateSideEffects() {
  const auto pending = snapshot();
  if (!c_.services.preferences.loadConfiguration()->workflowStageUpdates) return continueAfterStaging(pending);
  const auto labels = pending.labels();
  switch (decideStaging({.labels = labels,
                         .inFlight = fields_.openAppsNotifyStageLabels,
                         .staged = fields_.labelsStagedBeforeDeferral})) {
    case StagingStep::skip:
      return continueAfterStaging(pending);
    case StagingStep::wait:
      return;
    case StagingStep::request:
      return stageBeforeDeferral(labels);
  }
}

void PendingUpdateSideEffects::stage(const LabelSet& labels, Staged then) {
  fields_.openAppsNotifyStageLabels = labels;
  const auto generation = ++fields_.openAppsNotifyStageGeneration;
  c_.crossings.fieldsChanged();
  c_.services.helper.startPatching(
      {}, listOf(labels),
      lifeline_.guard([this, generation, then = std::move(then)](const Result<PatchRunAnswer>& answer) mutable {
        then(generation == fields_.openAppsNotifyStageGeneration, outcomeOf(answer));
      }));
}

void PendingUpdateSideEffects::stageBeforeDeferral(const LabelSet& labels) {
  c_.log.info(fmt::format("Staging {} update(s) before closed-app patching and the deferral.", labels.size()));
  c_.messages.status(localized(kStaging));
  stage(labels, [this, labels, since = c_.services.clock.now()](bool isCurrent, const Status& staged) {
    if (c_.fields.messages.statusMessage == localized(kStaging)) c_.messages.status(std::nullopt);
    if (isCurrent) stagedBeforeDeferral(labels, since, staged);
  });
}

void PendingUpdateSideEffects::stagedBeforeDeferral(const LabelSet& labels, Date since, const Status& staged) {
  stagingEnded();
  if (!staged) {
    c_.log.warning(fmt::format("Staging before the deferral failed: {}. Continuing.", staged.error().text));
    return continueAfterStaging(snapshot());
  }
  fields_.labelsStagedBeforeDeferral = labels;
  if (!helperPassEndedSince(since)) return continueAfterStaging(snapshot());
  c_.log.info(
      fmt::format("The helper finished a background pass while staging waited. Rechecking {} label(s) before "
                  "closed-app patching and the deferral.",
                  labels.size()));
  c_.crossings.checkForUpdates(listOf(labels));
}

bool PendingUpdateSideEffects::helperPassEndedSince(Date moment) const {
  const auto state = c_.services.helperState.read();
  return state && state->lastBackgroundPatchSummary && state->lastBackgroundPatchSummary->completedAt > moment;
}

void PendingUpdateSideEffects::continueAfterStaging(const OpenAppsSnapshot& pending) {
  const auto& closed = pending.closedLabels;
  switch (decideClosedApps({.mayStart = pending.canPatchClosedApps && patcher_ != nullptr && !c_.gate.busy(),
                            .closed = closed,
                            .attempted = fields_.closedAppsAttemptedBeforeDeferral})) {
    case ClosedAppsStep::startPass:
      fields_.closedAppsAttemptedBeforeDeferral = closed;
      return startClosedAppsPass();
    case ClosedAppsStep::deliverWithoutRetry:
      c_.log.info(fmt::format("Not retrying the closed-app pass that already ran for {}. Delivering the deferral.",
                              joined(listOf(closed))));
      break;
    case ClosedAppsStep::deliver:
      break;
  }
  deliverDeferral(pending, {.closedAppsHandledElsewhere = pending.canPatchClosedApps && patcher_ == nullptr,
                            .closedAppsWaitForACPower = pending.closedAppsWaitForACPower});
}

void PendingUpdateSideEffects::startClosedAppsPass() {
  const auto generation = ++fields_.openAppsNotificationGeneration;
  setGate(OpenAppsNotificationGate::patchingClosedApps);
  c_.log.info("Patching closed apps before the open-apps notification.");
  // A turn of its own, for a patcher may answer at once, in the middle of the flow that counted.
  auto ended = lifeline_.guard([this, generation](ClosedAppsOutcome outcome) {
    if (generation == fields_.openAppsNotificationGeneration) closedAppsPassEnded(outcome);
  });
  patcher_->patchClosedApps([&main = c_.services.main, ended = std::move(ended)](ClosedAppsOutcome outcome) mutable {
    main.post([ended = std::move(ended), outcome]() mutable { ended(outcome); });
  });
}

void PendingUpdateSideEffects::closedAppsPassEnded(ClosedAppsOutcome outcome) {
  const auto next = decideAfterPass(outcome, c_.fields.gate.isLoading);
  if (next == AfterPass::waitForRefresh) return setGate(OpenAppsNotificationGate::refreshThenNotify);
  if (next == AfterPass::deliver)
    return deliverNow("Closed-app pass did not refresh the list; delivering the deferral.");
  setGate(OpenAppsNotificationGate::idle);
  const auto pending = snapshot();
  const bool isElsewhere = next == AfterPass::deliverHandledElsewhere;
  deliverDeferral(pending, {.closedAppsHandledElsewhere = isElsewhere,
                            .closedAppsWaitForACPower = !isElsewhere && pending.closedAppsWaitForACPower});
}

void PendingUpdateSideEffects::deliverNow(std::string_view reason) {
  setGate(OpenAppsNotificationGate::idle);
  c_.log.info(reason);
  deliverDeferral(snapshot(), {});
}

void PendingUpdateSideEffects::deliverDeferral(const OpenAppsSnapshot& pending, Delivery delivery) {
  if (!c_.fields.updateAll.userRecheckInFlight && !c_.fields.deferral.showDeferralPrompt)
    deferForFocus(pending, delivery);
  deliverOpenAppsNotification(pending, delivery);
}

void PendingUpdateSideEffects::deferForFocus(const OpenAppsSnapshot& pending, Delivery delivery) {
  const auto all = c_.fields.inventory.pendingUpdates;
  const auto count = delivery.closedAppsHandledElsewhere ? sizeOf(pending.openLabels) : all;
  if (count == 0 || !c_.crossings.applyAutomaticFocusDeferralIfNeeded()) return;
  c_.log.info("Pending updates found while Focus is active; armed an automatic focus deferral.");
  if (c_.services.preferences.loadConfiguration()->focusDeferralNotificationsEnabled)
    c_.services.notices.notifyDeferralEnded(all);
}

void PendingUpdateSideEffects::deliverOpenAppsNotification(const OpenAppsSnapshot& pending, Delivery delivery) {
  const auto& store = c_.services.preferences;
  const auto armed = store.readNextAutoLaunch();
  if (store.readAutomaticFocusDeferralArmed() && armed && *armed > c_.services.clock.now())
    return c_.log.info("Skipping the open-apps notification during an automatic focus deferral.");
  if (shouldStageBeforeNotification(newsFacts(pending))) return stageBeforeNotification(pending.labels(), delivery);
  tell(pending, delivery);
}

void PendingUpdateSideEffects::stageBeforeNotification(const LabelSet& labels, Delivery delivery) {
  if (fields_.openAppsNotifyStageLabels == labels) return;
  c_.log.info(fmt::format("Staging {} update(s) before the open-apps notification.", labels.size()));
  stage(labels, [this, delivery](bool isCurrent, const Status& staged) {
    if (!isCurrent) return;
    stagingEnded();
    if (!staged)
      c_.log.warning(
          fmt::format("Staging before the open-apps notification failed: {}. Notifying anyway.", staged.error().text));
    tell(snapshot(), delivery);
  });
}

void PendingUpdateSideEffects::tell(const OpenAppsSnapshot& pending, Delivery delivery) {
  if (delivery.closedAppsHandledElsewhere && patcher_ == nullptr && !c_.gate.busy())
    c_.services.notifications.post(CorvaneClosedAppsPatchRequested{});
  const auto open = sizeOf(pending.openLabels);
  // Asked before the notifier raises the count that the user knows.
  const bool dialogIsDue = shouldPresentDeferralDialog(newsFacts(pending));
  c_.services.notices.notifyUpdatesAvailable({.open = open,
                                              .total = sizeOf(pending.pending),
                                              .closedAppsHandledElsewhere = delivery.closedAppsHandledElsewhere,
                                              .closedAppsWaitForACPower = delivery.closedAppsWaitForACPower});
  if (dialogIsDue) presentDialogForOpenApps(open);
}

void PendingUpdateSideEffects::presentDialogForOpenApps(std::int64_t openCount) {
  if (c_.crossings.applyAutomaticFocusDeferralIfNeeded())
    return c_.log.info(
        fmt::format("{} open app(s) need updates, but an automatic focus deferral is hiding the dialog.", openCount));
  c_.log.info(fmt::format("{} open app(s) need updates — presenting the deferral dialog.", openCount));
  c_.crossings.updateAll(DeferralPromptHost::standalone);
}

void PendingUpdateSideEffects::stageDetectedUpdates(const Labels& labels) {
  auto wanted = withoutDuplicates(labels);
  std::erase_if(wanted, [](const Label& label) { return label.empty(); });
  if (wanted.empty() || c_.gate.busy()) return;
  c_.log.info(fmt::format("Staging {} detected update(s) with no closed apps to patch.", wanted.size()));
  c_.services.helper.startPatching({}, wanted, [log = c_.log](const Result<PatchRunAnswer>& answer) {
    if (const auto staged = outcomeOf(answer); !staged)
      log.warning(fmt::format("Staging request failed: {}", staged.error().text));
  });
}

OpenAppsSnapshot PendingUpdateSideEffects::snapshot() const {
  return openAppsSnapshot(c_.fields.inventory, c_.crossings.facts(), c_.services, c_.log);
}

NewsFacts PendingUpdateSideEffects::newsFacts(const OpenAppsSnapshot& pending) const {
  const auto& store = c_.services.preferences;
  const auto config = store.loadConfiguration();
  const auto& staged = fields_.labelsStagedBeforeDeferral;
  return {.open = sizeOf(pending.openLabels),
          .notified = store.readLastNotifiedPendingUpdatesCount(),
          .now = c_.services.clock.now(),
          .armed = store.readNextAutoLaunch(),
          .stageUpdates = config->workflowStageUpdates,
          .allStaged = config->workflowStageUpdates && staged && std::ranges::includes(*staged, pending.labels()),
          .notificationsEnabled = config->updatesAvailableNotificationsEnabled,
          .isActive = c_.services.application.isActive(),
          .showsPrompt = c_.fields.deferral.showDeferralPrompt,
          .cycleComplete = pending.cycleComplete};
}

void PendingUpdateSideEffects::stagingEnded() {
  fields_.openAppsNotifyStageLabels.reset();
  c_.crossings.fieldsChanged();
}

void PendingUpdateSideEffects::setGate(OpenAppsNotificationGate gate) {
  fields_.openAppsNotificationGate = gate;
  c_.crossings.fieldsChanged();
}

}  // namespace corvane
