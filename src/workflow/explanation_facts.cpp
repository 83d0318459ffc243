// What explanations are made from, taken once from the stores and the machine.
#include <utility>

#include "core/policies/business_hours_gate.h"
#include "core/policies/deferral_manager.h"
#include "core/policies/focus_mode_detector.h"
#include "workflow/deferral_texts.h"
#include "workflow/explanation.h"
#include "workflow/watchpoint.h"

namespace corvane {

namespace {

std::optional<Date> lastBackgroundPass(const CorvaneConfiguration& config, const WorkflowServices& services) {
  if (config.backgroundPatchClosedAppsScheduler == BackgroundPatchSchedulerMode::inApp)
    return services.preferences.readLastBackgroundPatchDate();
  const auto state = services.helperState.read();
  if (!state || !state->lastBackgroundPatchSummary) return std::nullopt;
  return state->lastBackgroundPatchSummary->completedAt;
}

}  // namespace

ExplanationFacts explanationFacts(const StatusViewModel& model, const WorkflowServices& services,
                                  std::function<std::string(Date)> moment) {
  const auto& fields = model.fields();
  const auto& store = services.preferences;
  const auto now = services.clock.now();
  ExplanationFacts facts{.apps = model.facts(), .now = now};
  const auto& config = *facts.apps.config;
  const auto calendar = services.locale.calendar();

  // The message may be due and not published yet, as in a process whose model does not act.
  auto inventory = fields.inventory;
  if (!inventory.cycleCompletionMessage) inventory.cycleCompletionMessage = model.computeCycleCompletionMessage();
  facts.pending = openAppsSnapshot(inventory, facts.apps, services, Logger(services.log, "Explanation"));

  const DeferralManager deferrals(config, services.preferences, services.clock, calendar);
  facts.deadlineStatus = deferrals.checkDeadlines();
  facts.deferrals = deferrals.getDeferralInfo();
  facts.hardDeadline = deferrals.hardDeadlineDate();
  facts.deadlineReason = hardDeadlineText(facts.deferrals, config, now);
  facts.limitSummary = model.deferralsRemainingSummary();
  facts.cycle = store.readPatchingCadenceState();

  facts.armed = model.pendingWatchpoint();
  // The level that the model shows is of its last look; what is stored tells whether the deadline has come since.
  if (facts.armed && facts.deadlineStatus == DeferralDeadlineStatus::hardDeadlineReached)
    facts.armed = watchpoint::Enforcement{momentOf(*facts.armed)};
  if (const auto date = store.readNextAutoLaunch(); date && *date <= now) facts.due = date;
  facts.toldOpenApps = store.readLastNotifiedPendingUpdatesCount();
  facts.showsPrompt = fields.deferral.showDeferralPrompt;
  facts.isPatching = fields.gate.isPatching;
  facts.isLoading = fields.gate.isLoading;

  facts.inFocus =
      FocusModeDetector::evaluate(services.focus, FocusModeDetector::parseIgnoreList(config.ignoreDNDApps)).isActive;
  facts.focusMayPutOff =
      (config.deadlineCountFocus || config.deadlineDaysFocus) && facts.deadlineStatus == DeferralDeadlineStatus::normal;
  facts.onACPower = services.power.isOnACPower();
  facts.helperOperational = services.installation.isOperational();
  facts.installomatorAvailable = services.files.exists(services.places.installomatorScript());

  const BusinessHoursGate hours(config.businessHoursStartTime, config.businessHoursEndTime, calendar);
  facts.hasBusinessHours = !hours.isDisabled();
  if (hours.isWithinBusinessHours(now)) facts.businessHoursEnd = hours.nextWindowEnd(now);
  facts.lastUpdateCheck = inventory.lastUpdateCheckDate;
  facts.lastBackgroundPass = lastBackgroundPass(config, services);
  facts.sourceOf = [&store](std::string_view key) { return store.valueSource(key); };
  facts.moment = std::move(moment);
  return facts;
}

}  // namespace corvane
