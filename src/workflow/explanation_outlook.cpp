// What comes next for pending updates, and the account of everything that no single application decides.
#include <algorithm>
#include <chrono>

#include "base/localized.h"
#include "core/policies/running_bundles.h"
#include "workflow/deferral_texts.h"
#include "workflow/explanation_parts.h"
#include "workflow/side_effect_decisions.h"
#include "workflow/watchpoint.h"

namespace corvane {

namespace explained {

namespace {

constexpr std::string_view kBackgroundPass = "BackgroundPatchClosedAppsEnabled";

std::int64_t openCount(const ExplanationFacts& facts) {
  return static_cast<std::int64_t>(facts.pending.openLabels.size());
}

bool isPromptDue(const ExplanationFacts& facts) {
  return shouldPresentDeferralDialog({.open = openCount(facts),
                                      .notified = facts.toldOpenApps,
                                      .now = facts.now,
                                      .armed = facts.armed ? std::optional(momentOf(*facts.armed)) : std::nullopt,
                                      .showsPrompt = facts.showsPrompt,
                                      .cycleComplete = facts.pending.cycleComplete});
}

struct ArmedPromptWords {
  const ExplanationFacts& facts;
  std::string operator()(const watchpoint::Enforcement& armed) const {
    return localized("The deadline is reached: the updates install by themselves {}.", facts.moment(armed.at));
  }
  std::string operator()(const watchpoint::DeferralReminder& armed) const {
    return localized("No prompt before {}: the updates are put off until then.", facts.moment(armed.at));
  }
  std::string operator()(const watchpoint::FocusDeferral& armed) const {
    return localized("No prompt before {}: nobody was to be disturbed.", facts.moment(armed.at));
  }
};

struct ArmedNextWords {
  const ExplanationFacts& facts;
  std::string operator()(const watchpoint::Enforcement& armed) const {
    return localized("The updates install by themselves {}.", facts.moment(armed.at));
  }
  std::string operator()(const watchpoint::DeferralReminder& armed) const {
    return localized("The question comes back {}.", facts.moment(armed.at));
  }
  std::string operator()(const watchpoint::FocusDeferral& armed) const {
    return localized("It is looked at again {}.", facts.moment(armed.at));
  }
};

// `closed`: the one application that is asked about is closed.
std::string promptText(const ExplanationFacts& facts, bool closed) {
  if (facts.showsPrompt) return localized("The prompt is on screen.");
  if (facts.isPatching) return localized("No prompt while updates are being installed.");
  if (facts.pending.cycleComplete) return localized("No prompt: this cycle is complete.");
  if (facts.pending.pending.empty()) return localized("No prompt: nothing is pending.");
  if (facts.armed) return std::visit(ArmedPromptWords{facts}, *facts.armed);
  if (facts.due) return localized("A prompt is due since {}.", facts.moment(*facts.due));
  if (closed) return localized("No prompt asks about it by itself, for it is closed.");
  if (openCount(facts) == 0) return localized("No prompt comes by itself: what is pending is closed.");
  if (facts.inFocus && facts.focusMayPutOff) return localized("No prompt now: the user is not to be disturbed.");
  if (isPromptDue(facts)) return localized("A prompt comes as soon as the pending updates are looked at again.");
  return localized(facts.toldOpenApps == 1
                       ? toLocalize("No prompt comes by itself: the user was told of {} open application already.")
                       : toLocalize("No prompt comes by itself: the user was told of {} open applications already."),
                   facts.toldOpenApps);
}

struct Next {
  std::string text;
  std::optional<Date> at;
};

Next nextOfPending(const ExplanationFacts& facts, const Silence& silence, bool someClosed) {
  if (facts.isPatching) return {localized("Updates are being installed."), facts.now};
  if (facts.isLoading) return {localized("The applications are being checked."), facts.now};
  // A pass over what is closed waits for no deferral.
  if (someClosed && silence.obstacle.empty()) {
    if (const auto pass = nextBackgroundPass(facts))
      return {localized("The background pass installs what is closed {}.", facts.moment(*pass)), pass};
    return {localized("The next background pass installs what is closed."), std::nullopt};
  }
  if (facts.armed) return {std::visit(ArmedNextWords{facts}, *facts.armed), momentOf(*facts.armed)};
  if (facts.hardDeadline && *facts.hardDeadline > facts.now)
    return {localized("Update All asks at any time; the deadline is {}.", facts.moment(*facts.hardDeadline)),
            facts.hardDeadline};
  return {localized("Update All asks at any time; nothing is armed."), std::nullopt};
}

}  // namespace

Silence silenceOfAll(const ExplanationFacts& facts) {
  const auto& config = *facts.apps.config;
  if (!config.backgroundPatchClosedAppsEnabled) return {localized("The background pass is off."), kBackgroundPass};
  if (!facts.helperOperational) return {localized("The root helper is not running."), {}};
  if (!facts.installomatorAvailable) return {localized("Installomator is not there."), {}};
  if (config.backgroundPatchClosedAppsRequireOnAC && !facts.onACPower)
    return {localized("It waits for the power adapter."), "BackgroundPatchClosedAppsRequireOnAC"};
  return {};
}

Silence silenceOf(const Label& label, const ExplanationFacts& facts) {
  if (facts.pending.openLabels.contains(label)) return {localized("It is open."), {}};
  if (!backgroundListsAllow(label, facts.apps.config)) {
    CorvaneConfiguration allowingAll = facts.apps.config;
    allowingAll.backgroundPatchClosedAppsAllowList.clear();
    return backgroundListsAllow(label, allowingAll)
               ? Silence{localized("It is not on the allow list."), "BackgroundPatchClosedAppsAllowList"}
               : Silence{localized("It is on the block list."), "BackgroundPatchClosedAppsBlockList"};
  }
  return silenceOfAll(facts);
}

std::optional<Date> nextBackgroundPass(const ExplanationFacts& facts) {
  const auto& config = *facts.apps.config;
  if (!config.backgroundPatchClosedAppsEnabled || !facts.lastBackgroundPass) return std::nullopt;
  const auto next = *facts.lastBackgroundPass +
                    std::chrono::hours(std::max<std::int64_t>(config.backgroundPatchClosedAppsIntervalHours, 1));
  return next > facts.now ? std::optional(next) : std::nullopt;
}

void tellOutlook(Explanation& explanation, const ExplanationFacts& facts) {
  const auto& label = explanation.label;
  const bool one = !label.empty();
  const bool closed = one ? facts.pending.closedLabels.contains(label) : !facts.pending.closedLabels.empty();
  explanation.prompt = promptText(facts, one && closed);
  auto next = nextOfPending(facts, one ? silenceOf(label, facts) : silenceOfAll(facts), closed);
  explanation.next = std::move(next.text);
  explanation.nextAt = next.at;
}

}  // namespace explained

namespace {

using namespace explained;
using Rule = ExplainedRule;

ExplanationStep cycleStep(const ExplanationFacts& facts) {
  const auto& cycle = facts.cycle;
  std::string detail;
  if (cycle.currentPatchingStartDate)
    detail = localized("The cycle began {}.", facts.moment(*cycle.currentPatchingStartDate));
  if (cycle.nextCycleStartDate)
    detail +=
        (detail.empty() ? "" : " ") + localized("The next one starts {}.", facts.moment(*cycle.nextCycleStartDate));
  if (detail.empty()) detail = localized("No cycle is on record yet.");
  return step(facts, Rule::cycleComplete, facts.pending.cycleComplete, std::move(detail),
              facts.apps.config->monthlyPatchingCadenceEnabled ? "MonthlyPatchingCadenceEnabled" : "PatchWeekStartDay");
}

ExplanationStep pendingStep(const ExplanationFacts& facts) {
  const auto open = facts.pending.openLabels.size();
  const auto closed = facts.pending.closedLabels.size();
  return step(facts, Rule::pending, !facts.pending.pending.empty(),
              facts.pending.pending.empty() ? std::string() : localized("{} open, {} closed.", open, closed));
}

ExplanationStep deadlineStep(const ExplanationFacts& facts) {
  const bool reached = facts.deadlineStatus == DeferralDeadlineStatus::hardDeadlineReached;
  std::string detail;
  if (reached) detail = facts.deadlineReason;
  if (facts.hardDeadline)
    detail += (detail.empty() ? "" : " ") + localized("The update deadline is {}.", facts.moment(*facts.hardDeadline));
  if (detail.empty()) detail = localized("No deadline stands.");
  const auto& config = *facts.apps.config;
  return step(facts, Rule::deadline, reached, std::move(detail),
              config.deadlineDaysHard || !config.deadlineCountHard ? "DeadlineDaysHard" : "DeadlineCountHard");
}

ExplanationStep deferralsStep(const ExplanationFacts& facts) {
  const auto& limit = facts.apps.config->deadlineCountHard;
  const auto used = facts.deferrals.hardDeferralCount;
  const bool reached = facts.deadlineStatus == DeferralDeadlineStatus::hardDeadlineReached;
  auto detail =
      limit ? localized("{} of {} used.", used, *limit) : localized("{} used; their number has no limit.", used);
  if (!reached && facts.limitSummary) detail += " " + *facts.limitSummary;
  return step(facts, Rule::deferralsLeft, !reached, std::move(detail), "DeadlineCountHard");
}

ExplanationStep focusStep(const ExplanationFacts& facts) {
  const auto& config = *facts.apps.config;
  const bool limited = config.deadlineCountFocus || config.deadlineDaysFocus;
  std::string detail;
  if (!limited)
    detail = localized("Focus puts nothing off, for no limit of focus deferrals is set.");
  else if (!facts.focusMayPutOff)
    detail = localized("Focus puts nothing off any more in this cycle.");
  else
    detail = localized("Focus puts prompts off for {} min each time.", config.deferralTimerFocus);
  return step(facts, Rule::focus, facts.inFocus, std::move(detail),
              limited && facts.focusMayPutOff ? "DeferralTimerFocus" : "DeadlineCountFocus");
}

ExplanationStep hoursStep(const ExplanationFacts& facts) {
  std::string detail;
  if (!facts.hasBusinessHours)
    detail = localized("None are set.");
  else if (facts.businessHoursEnd)
    detail = localized("Nothing is forced before they end, {}.", facts.moment(*facts.businessHoursEnd));
  return step(facts, Rule::businessHours, facts.businessHoursEnd.has_value(), std::move(detail),
              "BusinessHoursStartTime");
}

ExplanationStep helperStep(const ExplanationFacts& facts) {
  std::string detail;
  if (!facts.helperOperational)
    detail = localized("The root helper is not running.");
  else if (!facts.installomatorAvailable)
    detail = localized("Installomator is not there.");
  const bool ready = detail.empty();
  return step(facts, Rule::helper, ready, std::move(detail));
}

ExplanationStep passStep(const ExplanationFacts& facts) {
  const auto silence = silenceOfAll(facts);
  std::string detail = silence.obstacle;
  if (detail.empty()) {
    const bool inApp = facts.apps.config->backgroundPatchClosedAppsScheduler == BackgroundPatchSchedulerMode::inApp;
    const auto next = nextBackgroundPass(facts);
    detail = localized(inApp ? toLocalize("The application runs it while it is open.")
                             : toLocalize("The root helper runs it."));
    if (next) detail += " " + localized("It is due next {}.", facts.moment(*next));
  }
  return step(facts, Rule::backgroundPass, silence.obstacle.empty(), std::move(detail),
              silence.key.empty() ? "BackgroundPatchClosedAppsEnabled" : silence.key);
}

ExplanationStep armedStep(const ExplanationFacts& facts) {
  std::string detail;
  if (facts.armed)
    detail = facts.moment(momentOf(*facts.armed));
  else if (facts.due)
    detail = localized("Due since {}.", facts.moment(*facts.due));
  return step(facts, Rule::armed, facts.armed || facts.due, std::move(detail));
}

}  // namespace

Explanation explainAll(const ExplanationFacts& facts) {
  Explanation all;
  for (auto* make : {&pendingStep, &cycleStep, &deadlineStep, &deferralsStep, &focusStep, &hoursStep, &helperStep,
                     &passStep, &armedStep})
    all.steps.push_back(make(facts));
  if (!facts.pending.pending.empty()) {
    tellOutlook(all, facts);
    return all;
  }
  all.prompt = localized(facts.pending.cycleComplete ? toLocalize("No prompt: this cycle is complete.")
                                                     : toLocalize("No prompt: nothing is pending."));
  all.next = localized("The next check for updates looks for new versions.");
  if (facts.pending.cycleComplete && facts.cycle.nextCycleStartDate) {
    all.next = localized("The next cycle starts {}.", facts.moment(*facts.cycle.nextCycleStartDate));
    all.nextAt = facts.cycle.nextCycleStartDate;
  }
  return all;
}

}  // namespace corvane
