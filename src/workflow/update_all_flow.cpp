#include "workflow/update_all_flow.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "base/localized.h"
#include "core/discovery/app_discovery_service.h"
#include "core/policies/business_hours_gate.h"
#include "core/policies/deferral_manager.h"
#include "workflow/app_predicates.h"
#include "workflow/hard_deadline_decision.h"

namespace corvane {

namespace {

bool holds(const Labels& labels, const Label& label) { return std::ranges::find(labels, label) != labels.end(); }

// Of `labels` those that are not in `others`, in their order.
Labels without(const Labels& labels, const Labels& others) {
  Labels left;
  std::ranges::copy_if(labels, std::back_inserter(left), [&](const Label& label) { return !holds(others, label); });
  return left;
}

std::string sortedAndJoined(Labels labels) {
  std::ranges::sort(labels, {}, &Label::text);
  return joined(labels);
}

}  // namespace

void UpdateAllFlow::updateAll(DeferralPromptHost host) {
  if (c_.gate.busy()) return c_.log.info("Skipping updateAll — another operation is already running");
  c_.crossings.setPromptHost(host);
  const auto facts = c_.crossings.facts();
  if (c_.fields.inventory.cycleCompletionMessage) {
    const auto labels = actionableUpdateLabels(c_.fields.inventory.apps, facts);
    if (labels.empty()) return nothingToUpdate("Update All requested but no apps have updates available");
    setPending(labels);
    c_.log.info(fmt::format("Update All during a completed cycle — installing {} without a deferral.",
                            sortedAndJoined(labels)));
    return recheckThenInstall(labels);
  }
  const auto labels = promptableUpdateLabels(c_.fields.inventory, facts);
  if (labels.empty()) return nothingToUpdate("Update All requested but no apps have updates available");
  c_.log.info(fmt::format("Rechecking {} pending label(s) before the deferral prompt.", labels.size()));
  recheck(labels, [this, host, labels] { continueUpdateAll(host, labels); });
}

void UpdateAllFlow::continueUpdateAll(DeferralPromptHost host, const Labels& labels) {
  c_.crossings.setPromptHost(host);
  const auto facts = c_.crossings.facts();
  auto fresh = promptableUpdateLabels(c_.fields.inventory, facts);
  if (!c_.fields.inventory.cycleCompletionMessage) {
    auto kept = without(
        unconfirmedRecheckLabels(AppDiscoveryService::droppingIgnoredLabels(labels, facts.config), facts), fresh);
    std::erase_if(kept, [&](const Label& label) { return isHeldBack(label, facts); });
    if (!kept.empty()) {
      c_.log.info(fmt::format("The recheck could not confirm {}; keeping it pending.", joined(kept)));
      fresh.insert(fresh.end(), kept.begin(), kept.end());
    }
  }
  if (fresh.empty())
    return nothingLeft("Update All recheck found no apps that still need an update — completing the patching cycle.");
  c_.log.info("Update All — checking deferral status");
  const auto& services = c_.services;
  const auto status =
      DeferralManager(facts.config, services.preferences, services.clock, services.locale.calendar()).checkDeadlines();
  const bool forced = status == DeferralDeadlineStatus::hardDeadlineReached;
  if (forced) armEnforcement(HardPromptReason::deadlineReached);
  setPending(std::move(fresh));
  c_.crossings.askUser(forced ? DeferralEscalation::hard : DeferralEscalation::normal);
}

void UpdateAllFlow::armEnforcement(HardPromptReason reason) {
  auto& store = c_.services.preferences;
  const auto now = c_.services.clock.now();
  const auto calendar = c_.services.locale.calendar();
  const auto config = store.loadConfiguration();
  if (reason == HardPromptReason::deadlineReached) store.writeLastHardDeadlineFiredAt(now);
  const auto decision = decideHardDeadline(
      {.reason = reason,
       .now = now,
       .armed = store.readNextAutoLaunch(),
       .timeoutSeconds = config->dialogTimeoutDeferral},
      BusinessHoursGate(config->businessHoursStartTime, config->businessHoursEndTime, calendar), calendar);
  if (decision.arm) store.writeNextAutoLaunch(*decision.arm, false, false);
  c_.log.info(decision.logLine);
}

void UpdateAllFlow::updateAllFromMenuBar() {
  c_.services.notices.dismissUpdateNotifications({});
  if (c_.gate.busy()) return c_.log.info("Menu bar Update All is waiting for the current check to finish.");
  const auto labels = promptableUpdateLabels(c_.fields.inventory, c_.crossings.facts());
  if (labels.empty()) return nothingToUpdate("Menu bar Update All requested but no apps have updates available");
  setPending(labels);
  c_.log.info(fmt::format("Menu bar Update All — rechecking {}.", sortedAndJoined(labels)));
  recheckThenInstall(labels);
}

void UpdateAllFlow::installNow() {
  c_.services.notices.dismissUpdateNotifications({});
  if (c_.gate.busy()) {
    c_.log.info("Install Now will run when the current check or install finishes.");
    return queueInstallNow();
  }
  if (fields_.pendingPatchLabels.empty()) return installAfterRecheck({});
  recheckThenInstall(Labels(fields_.pendingPatchLabels));
}

void UpdateAllFlow::queueInstallNow() {
  if (fields_.installNowQueued) return;
  fields_.installNowQueued = true;
  c_.crossings.fieldsChanged();
  c_.gate.whenIdle(lifeline_.guard([this, presentation = c_.fields.deferral.deferralPromptGeneration] {
    fields_.installNowQueued = false;
    c_.crossings.fieldsChanged();
    const auto& prompt = c_.fields.deferral;
    if (prompt.showDeferralPrompt && prompt.deferralPromptGeneration == presentation) installNow();
  }));
}

void UpdateAllFlow::recheckThenInstall(const Labels& labels) {
  c_.log.info(fmt::format("Rechecking {} label(s) before installing.", labels.size()));
  recheck(labels, [this, labels] { installAfterRecheck(labels); });
}

// Its answer may have set off work of its own before it reaches us; what follows then waits for an idle moment.
void UpdateAllFlow::recheck(const Labels& labels, std::move_only_function<void()> then) {
  fields_.userRecheckInFlight = true;
  c_.crossings.fieldsChanged();
  c_.crossings.recheck(labels, lifeline_.guard([this, then = std::move(then)]() mutable {
    fields_.userRecheckInFlight = false;
    c_.crossings.fieldsChanged();
    c_.gate.nowOrWhenIdle(std::move(then));
  }));
}

void UpdateAllFlow::installAfterRecheck(const Labels& labels) {
  const auto facts = c_.crossings.facts();
  const auto kept = AppDiscoveryService::droppingIgnoredLabels(labels, facts.config);
  if (const auto ignored = without(labels, kept); !ignored.empty())
    c_.log.info(fmt::format("Dropped {} because the current settings exclude it.", joined(ignored)));
  Labels confirmed;
  std::ranges::copy_if(kept, std::back_inserter(confirmed), [&](const Label& label) {
    const auto* app = appWith(c_.fields.inventory.apps, label);
    return app != nullptr && appNeedsUpdate(*app, facts) && !app->updateCheckFailed && !app->teamIDMismatch;
  });
  if (const auto unconfirmed = without(unconfirmedRecheckLabels(kept, facts), confirmed); !unconfirmed.empty()) {
    c_.log.info(fmt::format("The recheck could not confirm {}; installing anyway.", joined(unconfirmed)));
    confirmed.insert(confirmed.end(), unconfirmed.begin(), unconfirmed.end());
  }
  if (const auto dropped = without(kept, confirmed); !dropped.empty())
    c_.log.info(fmt::format("Dropped {} because a fresh check shows no update.", joined(dropped)));
  setPending({});
  if (confirmed.empty())
    return nothingLeft("Install Now had no apps that still need an update — completing the patching cycle.");
  c_.crossings.dismissDeferralPrompt();
  if (c_.fields.deferral.currentDeferralEscalation == DeferralEscalation::hard)
    c_.crossings.recordDeferralEvents(confirmed, DeferralEventType::deadlineForced, std::nullopt, std::nullopt);
  c_.crossings.patchAll(confirmed);
}

void UpdateAllFlow::nothingToUpdate(std::string_view logLine) {
  c_.log.info(logLine);
  c_.messages.status(localized("No applications currently require updates."));
}

void UpdateAllFlow::nothingLeft(std::string_view logLine) {
  c_.log.info(logLine);
  c_.crossings.completePatchingCycle();
  c_.messages.status(localized("No applications currently require updates."));
}

void UpdateAllFlow::setPending(Labels labels) {
  fields_.pendingPatchLabels = std::move(labels);
  c_.crossings.fieldsChanged();
}

Labels UpdateAllFlow::unconfirmedRecheckLabels(const Labels& labels, const AppFacts& facts) const {
  Labels unconfirmed;
  std::ranges::copy_if(labels, std::back_inserter(unconfirmed), [&](const Label& label) {
    const auto* app = appWith(c_.fields.inventory.apps, label);
    return app != nullptr && app->updateCheckFailed && !app->teamIDMismatch && !isExcludedAppStoreApp(*app, facts);
  });
  return unconfirmed;
}

}  // namespace corvane
