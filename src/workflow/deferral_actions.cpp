#include "workflow/deferral_actions.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <set>
#include <utility>

#include "base/localized.h"
#include "core/policies/deferral_install_behavior_resolver.h"
#include "core/policies/deferral_limit_summary.h"
#include "core/policies/focus_mode_detector.h"
#include "workflow/app_predicates.h"
#include "workflow/deferral_options.h"
#include "workflow/deferral_texts.h"
#include "workflow/open_apps_snapshot.h"

namespace corvane {

namespace {

constexpr auto kNoVersion = "—";

std::string currentVersionText(const AppInfo& app) {
  if (const auto version = app.displayCurrentVersion()) return *version;
  return app.isInstalled() ? kNoVersion : localized("Not installed");
}

}  // namespace

DeferralActions::DeferralActions(const RoomContext& context, DeferralFields& fields) : c_(context), fields_(fields) {}

void DeferralActions::load() { fields_.currentHardDeadlineDate = manager().hardDeadlineDate(); }

DeferralManager DeferralActions::manager() const {
  auto& store = c_.services.preferences;
  return {store.loadConfiguration(), store, c_.services.clock, c_.services.locale.calendar()};
}

// A prompt that stands moves: it is never in two places, nor in none.
void DeferralActions::setPromptHost(DeferralPromptHost host) {
  const auto before = std::exchange(fields_.deferralPromptHost, host);
  if (fields_.showDeferralPrompt && before != host) showWhereItBelongs();
  c_.crossings.fieldsChanged();
}

void DeferralActions::ask(DeferralEscalation escalation) {
  fields_.currentDeferralEscalation = escalation;
  fields_.currentHardDeadlineDate = manager().hardDeadlineDate();
  const auto options = availableDeferralOptions();
  fields_.selectedDeferralMinutes =
      options.empty() ? c_.services.preferences.loadConfiguration()->deferralTimerDefault : options.front();
  presentDeferralPrompt();
}

void DeferralActions::presentDeferralPrompt() {
  c_.services.preferences.clearHardDeadlineDialogDismissedUntil();
  c_.services.notices.cancelReminders();
  ++fields_.deferralPromptGeneration;
  fields_.showDeferralPrompt = true;
  c_.crossings.fieldsChanged();
  showWhereItBelongs();
}

void DeferralActions::showWhereItBelongs() {
  if (fields_.deferralPromptHost == DeferralPromptHost::standalone)
    c_.services.prompts.showStandaloneWindow();
  else
    c_.services.prompts.hideStandaloneWindow();
}

void DeferralActions::dismissDeferralPrompt() {
  c_.services.preferences.clearHardDeadlineDialogDismissedUntil();
  c_.services.notices.cancelReminders();
  closeUnanswered();
}

void DeferralActions::closeUnanswered() {
  fields_.showDeferralPrompt = false;
  c_.services.prompts.hideStandaloneWindow();
  c_.crossings.fieldsChanged();
}

void DeferralActions::userClosedHardDeadlineDialog() {
  auto& store = c_.services.preferences;
  const auto now = c_.services.clock.now();
  const auto enforcement = store.readNextAutoLaunch();
  if (fields_.currentDeferralEscalation != DeferralEscalation::hard ||
      !store.loadConfiguration()->hardDeadlineDialogAllowClose || !enforcement || *enforcement <= now)
    return;
  store.writeHardDeadlineDialogDismissedUntil(*enforcement);
  closeUnanswered();
  c_.services.notices.cancelReminders();
  c_.services.notices.scheduleReminders(*enforcement, c_.fields.inventory.pendingUpdates);
  c_.log.info(fmt::format("User closed the allowed hard-deadline dialog; enforcement remains armed for {}.",
                          c_.services.locale.calendar().iso8601(*enforcement)));
}

void DeferralActions::deferUpdates(bool fromDialogTimeout) {
  c_.crossings.forgetClosedAppsAttempt();
  auto deferrals = manager();
  if (deferrals.checkDeadlines() == DeferralDeadlineStatus::hardDeadlineReached) {
    fields_.currentHardDeadlineDate = deferrals.hardDeadlineDate();
    c_.messages.status(localized("The update deadline has passed."));
    return refuse(HardPromptReason::deadlineReached);
  }
  const auto options = availableDeferralOptions();
  if (options.empty()) return refuse(HardPromptReason::noLengthLeft);
  const bool isOffered = std::ranges::find(options, fields_.selectedDeferralMinutes) != options.end();
  const auto minutes = isOffered ? fields_.selectedDeferralMinutes : options.front();
  fields_.selectedDeferralMinutes = minutes;
  if (fromDialogTimeout)
    tellTimedOut();
  else
    c_.services.notices.dismissUpdateNotifications({});
  dismissDeferralPrompt();
  deferrals.recordDeferral(minutes, fields_.currentDeferralEscalation);
  recordDeferralEvents(c_.fields.updateAll.pendingPatchLabels, DeferralEventType::userDeferred, minutes,
                       fields_.currentDeferralEscalation);
  c_.messages.status(localized("Updates deferred for {}.", deferralDurationText(minutes, c_.services.locale)));
}

// The word of it comes after the removal, or it would be taken away with the rest.
void DeferralActions::tellTimedOut() {
  const auto snapshot = openAppsSnapshot(c_.fields.inventory, c_.crossings.facts(), c_.services, c_.log);
  c_.services.main.post(lifeline_.guard([this, open = static_cast<std::int64_t>(snapshot.openLabels.size()),
                                         total = static_cast<std::int64_t>(snapshot.pending.size()),
                                         elsewhere = snapshot.canPatchClosedApps] {
    c_.services.notices.dismissUpdateNotifications(lifeline_.guard(
        [this, open, total, elsewhere] { c_.services.notices.notifyDialogTimeoutDeferred(open, total, elsewhere); }));
  }));
}

// Armed first: the countdown of the prompt is read from it.
void DeferralActions::refuse(HardPromptReason reason) {
  c_.crossings.armEnforcement(reason);
  fields_.currentDeferralEscalation = DeferralEscalation::hard;
  presentDeferralPrompt();
}

void DeferralActions::dialogTimeoutElapsed() {
  if (!fields_.showDeferralPrompt) return;
  if (fields_.currentDeferralEscalation == DeferralEscalation::hard ||
      c_.services.preferences.loadConfiguration()->dialogTimeoutDeferralAction == DeferralAction::continueUpdates) {
    c_.log.info("Deferral dialog timeout elapsed — continuing with updates.");
    return c_.crossings.installNow();
  }
  c_.log.info("Deferral dialog timeout elapsed — applying the configured defer action.");
  deferUpdates(true);
}

bool DeferralActions::applyAutomaticFocusDeferralIfNeeded() {
  fields_.focusRecheckSuppressedDialog = false;
  auto& store = c_.services.preferences;
  const auto config = store.loadConfiguration();
  const auto now = c_.services.clock.now();
  if (const auto armed = store.readNextAutoLaunch(); armed && *armed > now) return false;
  if (!config->deadlineCountFocus && !config->deadlineDaysFocus) return false;
  auto deferrals = manager();
  if (deferrals.checkDeadlines() != DeferralDeadlineStatus::normal) return false;
  const auto evaluation =
      FocusModeDetector::evaluate(c_.services.focus, FocusModeDetector::parseIgnoreList(config->ignoreDNDApps));
  const Logger log(c_.services.log, "FocusModeDetector");
  if (evaluation.doNotDisturbUnreadable || evaluation.displayCheckInconclusive)
    log.warning(evaluation.diagnostic);
  else
    log.info(evaluation.diagnostic);
  if (evaluation.displayCheckInconclusive) {
    fields_.focusRecheckSuppressedDialog = true;
    store.writeNextAutoLaunch(now + kInconclusiveWait, false, false);
    c_.log.warning("Display assertion check was inconclusive. Dialog stays hidden for 30 seconds.");
    return true;
  }
  if (!evaluation.isActive) return false;
  const auto minutes = std::max<std::int64_t>(config->deferralTimerFocus, 1);
  deferrals.recordAutomaticFocusDeferral(minutes);
  const auto facts = c_.crossings.facts();
  Labels pending;
  for (const auto& app : c_.fields.inventory.apps)
    if (isPending(app, facts)) pending.push_back(app.label);
  recordDeferralEvents(pending, DeferralEventType::focusSuppressed, minutes, DeferralEscalation::normal);
  c_.log.info(fmt::format("Automatic focus deferral for {} min. Dialog stays hidden.", minutes));
  return true;
}

void DeferralActions::recordDeferralEvents(const Labels& labels, DeferralEventType type,
                                           std::optional<std::int64_t> minutes,
                                           std::optional<DeferralEscalation> escalation) {
  if (labels.empty()) return;
  const auto now = c_.services.clock.now();
  const auto& apps = c_.fields.inventory.apps;
  for (const auto& label : labels) {
    const auto app = std::ranges::find(apps, label, &AppInfo::label);
    const auto written =
        c_.services.deferralEvents.writeEvent({.id = c_.services.entropy.uuid(),
                                               .label = label,
                                               .appName = app == apps.end() ? label.text : app->displayName(),
                                               .eventType = type,
                                               .timestamp = now,
                                               .deferralMinutes = minutes,
                                               .escalation = escalation});
    if (!written)
      c_.log.warning(fmt::format("Could not write deferral event for {}: {}", label.text, written.error().text));
  }
  c_.crossings.forgetDeferralEvents();
}

void DeferralActions::setHardDeadlineDate(std::optional<Date> date) {
  fields_.currentHardDeadlineDate = date;
  c_.crossings.fieldsChanged();
}

void DeferralActions::settleDeadline() {
  fields_.currentHardDeadlineDate.reset();
  fields_.currentDeferralEscalation = DeferralEscalation::normal;
  c_.crossings.fieldsChanged();
}

void DeferralActions::setSelectedDeferralMinutes(std::int64_t minutes) {
  fields_.selectedDeferralMinutes = minutes;
  c_.crossings.fieldsChanged();
}

std::vector<std::int64_t> DeferralActions::availableDeferralOptions() const {
  return corvane::availableDeferralOptions(c_.services.preferences.loadConfiguration(),
                                           fields_.currentDeferralEscalation, fields_.currentHardDeadlineDate,
                                           c_.services.clock.now(), c_.services.locale.calendar());
}

std::int64_t DeferralActions::promptCountdownSeconds() const {
  const auto& store = c_.services.preferences;
  const auto armed = store.readNextAutoLaunch();
  if (fields_.currentDeferralEscalation == DeferralEscalation::hard && armed) {
    const auto left = std::chrono::floor<std::chrono::seconds>(*armed - c_.services.clock.now()).count();
    if (left > 0) return left;
  }
  return std::max<std::int64_t>(store.loadConfiguration()->dialogTimeoutDeferral, 1);
}

std::optional<std::string> DeferralActions::hardDeadlineExplanation() const {
  if (fields_.currentDeferralEscalation != DeferralEscalation::hard) return std::nullopt;
  return hardDeadlineText(manager().getDeferralInfo(), c_.services.preferences.loadConfiguration(),
                          c_.services.clock.now());
}

std::optional<std::string> DeferralActions::deferralsRemainingSummary() const {
  if (fields_.currentDeferralEscalation == DeferralEscalation::hard) return std::nullopt;
  const auto config = c_.services.preferences.loadConfiguration();
  const auto info = manager().getDeferralInfo();
  const auto limit = std::max<std::int64_t>(config->deadlineCountHard.value_or(0), 0);
  const auto remaining = std::max<std::int64_t>(limit - info.hardDeferralCount, 0);
  const auto summary = DeferralLimitSummaryBuilder::make(
      remaining, config->deadlineDaysHard ? info.hardDeferralDate : std::nullopt, c_.services.clock.now());
  if (!summary) return std::nullopt;
  return limitSummaryText(*summary, c_.services.locale);
}

std::vector<DeferralPromptApp> DeferralActions::deferralPromptApps() const {
  const auto facts = c_.crossings.facts();
  const auto& labels = c_.fields.updateAll.pendingPatchLabels;
  const LabelSet wanted(labels.begin(), labels.end());
  Apps shown;
  std::ranges::copy_if(c_.fields.inventory.apps, std::back_inserter(shown), [&](const AppInfo& app) {
    return (wanted.empty() || wanted.contains(app.label)) && !app.teamIDMismatch &&
           (isPending(app, facts) || (!wanted.empty() && app.updateCheckFailed));
  });
  const auto open = openLabels(shown, c_.services, c_.log);
  std::vector<DeferralPromptApp> rows;
  rows.reserve(shown.size());
  for (const auto& app : shown)
    rows.push_back({.label = app.label,
                    .name = app.displayName(),
                    .currentVersion = currentVersionText(app),
                    .newVersion = app.displayNewVersion().value_or(kNoVersion),
                    .behavior = DeferralInstallBehaviorResolver::behavior(
                        {.isOpen = open.contains(app.label),
                         .installomatorOptions = facts.config->installomatorOptions,
                         .backgroundPatchClosedAppsEnabled = facts.config->backgroundPatchClosedAppsEnabled},
                        c_.services.installFacts.installFacts(app.label)),
                    .forcedReinstall = isForcedReinstallPending(app, facts)});
  return rows;
}

}  // namespace corvane
