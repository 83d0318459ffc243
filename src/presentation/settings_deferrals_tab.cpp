#include "presentation/settings_parts.h"

namespace corvane {
namespace {

// In the order of the calendar; 1 is Sunday.
std::vector<ControlChoice> anchorDays() {
  std::vector<ControlChoice> days;
  for (const auto& day : CaseNames<WeekdayIndex>::all)
    days.push_back({std::to_string(days.size() + 1), localized(day.display)});
  return days;
}

void addFocus(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("focus", localized("Focus Deferral"));
  form.stepper("DeadlineCountFocus", localized("Count limit"));
  form.stepper("DeadlineDaysFocus", localized("Day limit"));
  form.stepper("DeferralTimerFocus", localized("Automatic deferral:"));
  form.toggle("FocusDeferralNotificationsEnabled", localized("Notify during an automatic focus deferral"));
  form.field(ControlKind::text, "IgnoreDNDApps", localized("Ignore display-sleep apps"));
  form.note(
      "focusNote",
      localized(
          "While Focus, Do Not Disturb, or a display-sleep assertion is active, Corvane defers automatically for this "
          "long and hides the dialog. The count and day limits are interchangeable: once either is reached, reminders "
          "continue normally. Leave both limits off to disable automatic focus deferrals. Ignore display-sleep apps "
          "is a comma-separated list of process names, such as Google Chrome, caffeinate."));
}

void addHardDeadline(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("hardDeadline", localized("Hard Deadline"));
  form.stepper("DeadlineCountHard", localized("Count limit"));
  form.stepper("DeadlineDaysHard", localized("Day limit"));
  form.note("hardDeadlineNote",
            localized("Hard deadlines are the point of no more deferrals. Once a hard count or hard day "
                      "limit is reached, Corvane can require installation."));
}

void addCadence(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("cadence", localized("Patching Cadence"));
  form.picker(
      "PatchWeekStartDay", localized("Anchor weekday"), anchorDays(),
      localized("Weekly cadence anchors the patch cycle on the chosen weekday. Days-until-reset controls how long "
                "after a successful run the cycle re-arms."));
  form.stepper(
      "DaysUntilReset", localized("Reset cycle after"),
      localized("Counted from the cycle start. 7 resets every week and 14 every other week. Monthly cadence uses "
                "the next matching weekday instead."));
  form.toggle(
      "MonthlyPatchingCadenceEnabled", localized("Use monthly cadence (Nth weekday of the month)"),
      localized("Monthly cadence anchors the patch cycle on the chosen weekday-of-month (e.g. the second Tuesday). "
                "Choose Last to follow the final occurrence of that weekday each month."));
  form.picker<OrdinalValue>("MonthlyPatchingCadenceOrdinalValue", localized("Occurrence"));
  form.picker<WeekdayIndex>("MonthlyPatchingCadenceWeekdayIndex", localized("Weekday"));
}

void addBusinessHours(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("businessHours", localized("Business Hours"));
  const auto& model = form.in.model;
  auto& hold = form.control(
      ControlKind::toggle, SettingsKeys::businessHours, localized("Hold force-installs during business hours"),
      model.holdsBusinessHours() ? "true" : "false",
      localized("When enabled, Corvane holds the force-install step for open apps until after the window ends. "
                "Deferral prompts still appear so users can install on demand. Background patching of closed "
                "apps is never gated by this window."));
  if (model.flags().isBusinessHoursManaged) form.lock(hold);
  if (!model.holdsBusinessHours()) return;
  form.field(ControlKind::timeOfDay, "BusinessHoursStartTime", localized("Start"),
             std::string(SettingsViewModel::kDefaultBusinessHoursStart));
  form.field(ControlKind::timeOfDay, "BusinessHoursEndTime", localized("End"),
             std::string(SettingsViewModel::kDefaultBusinessHoursEnd));
}

}  // namespace

void addDeferralsTab(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("defaultTimer", localized("Default Deferral Timer"));
  form.stepper("DeferralTimerDefault", localized("Delay:"),
               localized("How long Corvane waits before re-presenting the patch prompt when the user defers."));
  addFocus(form);
  addHardDeadline(form);
  addCadence(form);
  addBusinessHours(form);
}

}  // namespace corvane
