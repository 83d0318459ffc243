#include "workflow/patch_cycle.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "base/localized.h"
#include "core/policies/deferral_manager.h"
#include "core/policies/patch_error_follow_up.h"
#include "core/policies/patching_cadence_manager.h"
#include "core/policies/satisfied_deferral_cycle.h"
#include "core/preferences/display_title.h"
#include "workflow/app_predicates.h"

namespace corvane {

void PatchCycle::applyPatchErrorFollowUp(DiscoveryOperation operation, const Labels& labels,
                                         const std::string& message) {
  if (operation != DiscoveryOperation::patchAll) return c_.messages.status(std::nullopt);
  const auto config = c_.services.preferences.loadConfiguration();
  const auto followUp =
      PatchErrorFollowUp::forUpdateAll(config->workflowUpdateAllErrorCompletesPatching, config->deferralTimerError);
  if (const auto* retry = std::get_if<PatchErrorFollowUp::RetryAfterMinutes>(&followUp))
    retryLater(retry->minutes);
  else
    markComplete(labels, message);
}

void PatchCycle::updatesPutOff(DiscoveryOperation operation, const Labels& labels) {
  c_.log.info(fmt::format("Skipped {} — leaving the deferral cycle and any active deadline in place.", joined(labels)));
  if (operation != DiscoveryOperation::patchAll) return;
  const auto minutes = c_.services.preferences.loadConfiguration()->deferralTimerError;
  c_.log.info(fmt::format("Next attempt at {} (DeferralTimerError={} minutes).",
                          c_.services.locale.calendar().iso8601(armRetry(minutes)), minutes));
}

Date PatchCycle::armRetry(std::int64_t minutes) {
  const Date retry = c_.services.clock.now() + std::chrono::minutes(minutes);
  closePrompt();
  c_.services.preferences.writeNextAutoLaunch(retry, false, true);
  return retry;
}

void PatchCycle::retryLater(std::int64_t minutes) {
  const auto retry = armRetry(minutes);
  const AppDisplayTitle title(c_.services.preferences.loadConfiguration());
  c_.messages.status(title.userFacing(localized("An update failed. Corvane will try again in {} minutes.", minutes)));
  c_.log.info(fmt::format("Update All finished with errors; next attempt at {} (DeferralTimerError={} minutes).",
                          c_.services.locale.calendar().iso8601(retry), minutes));
}

void PatchCycle::markComplete(const Labels& labels, const std::string& message) {
  const auto errored = PatchErrorFollowUp::erroredLabels(message, labels);
  if (!errored.empty()) {
    c_.services.preferences.addUpdateAllErrorClearedLabels(errored);
    c_.log.info(
        fmt::format("Cleared failed Update All label(s) from the queue until the next cycle: {}.", joined(errored)));
  }
  closePrompt();
  c_.services.preferences.clearNextAutoLaunch();
  recordSuccessfulPatchRun(c_.services.clock.now());
  c_.crossings.refreshDeadlineDisplay();
  c_.crossings.recomputeCounts(SideEffects::run);
  c_.messages.status(
      localized("Patching is marked complete for this cycle. Failed updates wait until the next reset."));
  c_.log.info(
      "Update All finished with errors; WorkflowUpdateAllErrorCompletesPatching is true, so this cadence is marked "
      "complete.");
}

void PatchCycle::completePatchingCycle() {
  closePrompt();
  auto& store = c_.services.preferences;
  DeferralManager(store.loadConfiguration(), store, c_.services.clock, c_.services.locale.calendar())
      .resetDeferralCounts();
  c_.crossings.deadlineSettled();
  store.clearLastHardDeadlineFiredAt();
  recordSuccessfulPatchRun(c_.services.clock.now());
}

void PatchCycle::recordSuccessfulPatchRun(Date completedAt) {
  c_.crossings.forgetClosedAppsAttempt();
  auto& store = c_.services.preferences;
  const PatchingCadenceManager cadence(store.loadConfiguration(), c_.services.locale.calendar());
  store.writePatchingCadenceState(cadence.recordSuccessfulPatchRun(completedAt, store.readPatchingCadenceState()));
}

bool PatchCycle::completeSatisfiedDeferralCycleIfNeeded() {
  if (c_.gate.busy()) return false;
  auto& store = c_.services.preferences;
  const auto info = DeferralManager(store.loadConfiguration(), store, c_.services.clock, c_.services.locale.calendar())
                        .getDeferralInfo();
  const auto facts = c_.crossings.facts();
  const bool satisfied = SatisfiedDeferralCycle::shouldComplete(
      info, {.knownApps = static_cast<std::int64_t>(c_.fields.inventory.apps.size()),
             .pendingUpdates = static_cast<std::int64_t>(promptableUpdateLabels(c_.fields.inventory, facts).size()),
             .inconclusiveChecks = inconclusiveChecks(facts)});
  if (!satisfied) return false;
  c_.log.info(
      fmt::format("No pending updates remain for the open deferral cycle (FocusDeferralCount={}, "
                  "HardDeferralCount={}) — completing the patching cycle.",
                  info.focusDeferralCount, info.hardDeferralCount));
  completePatchingCycle();
  c_.crossings.refreshDeadlineDisplay();
  c_.crossings.recomputeCounts(SideEffects::run);
  return true;
}

std::int64_t PatchCycle::inconclusiveChecks(const AppFacts& facts) const {
  return std::ranges::count_if(c_.fields.inventory.apps, [&](const AppInfo& app) {
    return (app.updateCheckFailed || !app.newVersion) && !app.teamIDMismatch && !isExcludedAppStoreApp(app, facts);
  });
}

void PatchCycle::closePrompt() {
  if (c_.fields.deferral.showDeferralPrompt) c_.crossings.dismissDeferralPrompt();
}

}  // namespace corvane
