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
  const auto text = [&](std::string_view literal) { return form.text(literal); };
  form.section("focus", text("Focus Deferral"));
  form.stepper("DeadlineCountFocus", text("Count limit"));
  form.stepper("DeadlineDaysFocus", text("Day limit"));
  form.stepper("DeferralTimerFocus", text("Automatic deferral:"));
  form.toggle("FocusDeferralNotificationsEnabled", text("Notify during an automatic focus deferral"));
  form.field(ControlKind::text, "IgnoreDNDApps", text("Ignore display-sleep apps"));
  form.note(
      "focusNote",
      text("While Focus, Do Not Disturb, or a display-sleep assertion is active, Corvane defers automatically for this "
           "long and hides the dialog. The count and day limits are interchangeable: once either is reached, reminders "
           "continue normally. Leave both limits off to disable automatic focus deferrals. Ignore display-sleep apps "
           "is a comma-separated list of process names, such as Google Chrome, caffeinate."));
}

void addHardDeadline(SettingsForm& form) {
  const auto text = [&](std::string_view literal) { return form.text(literal); };
  form.section("hardDeadline", text("Hard Deadline"));
  form.stepper("DeadlineCountHard", text("Count limit"));
  form.stepper("DeadlineDaysHard", text("Day limit"));
  form.note("hardDeadlineNote", text("Hard deadlines are the point of no more deferrals. Once a hard count or hard day "
                                     "limit is reached, Corvane can require installation."));
}

void addCadence(SettingsForm& form) {
  const auto text = [&](std::string_view literal) { return form.text(literal); };
  form.section("cadence", text("Patching Cadence"));
  form.picker("PatchWeekStartDay", text("Anchor weekday"), anchorDays(),
              text("Weekly cadence anchors the patch cycle on the chosen weekday. Days-until-reset controls how long "
                   "after a successful run the cycle re-arms."));
  form.stepper("DaysUntilReset", text("Reset cycle after"),
               text("Counted from the cycle start. 7 resets every week and 14 every other week. Monthly cadence uses "
                    "the next matching weekday instead."));
  form.toggle("MonthlyPatchingCadenceEnabled", text("Use monthly cadence (Nth weekday of the month)"),
              text("Monthly cadence anchors the patch cycle on the chosen weekday-of-month (e.g. the second Tuesday). "
                   "Choose Last to follow the final occurrence of that weekday each month."));
  form.picker<OrdinalValue>("MonthlyPatchingCadenceOrdinalValue", text("Occurrence"));
  form.picker<WeekdayIndex>("MonthlyPatchingCadenceWeekdayIndex", text("Weekday"));
}

void addBusinessHours(SettingsForm& form) {
  const auto text = [&](std::string_view literal) { return form.text(literal); };
  form.section("businessHours", text("Business Hours"));
  const auto& model = form.in.model;
  auto& hold =
      form.control(ControlKind::toggle, SettingsKeys::businessHours, text("Hold force-installs during business hours"),
                   model.holdsBusinessHours() ? "true" : "false",
                   text("When enabled, Corvane holds the force-install step for open apps until after the window ends. "
                        "Deferral prompts still appear so users can install on demand. Background patching of closed "
                        "apps is never gated by this window."));
  if (model.flags().isBusinessHoursManaged) form.lock(hold);
  if (!model.holdsBusinessHours()) return;
  form.field(ControlKind::timeOfDay, "BusinessHoursStartTime", text("Start"),
             std::string(SettingsViewModel::kDefaultBusinessHoursStart));
  form.field(ControlKind::timeOfDay, "BusinessHoursEndTime", text("End"),
             std::string(SettingsViewModel::kDefaultBusinessHoursEnd));
}

}  // namespace

void addDeferralsTab(SettingsForm& form) {
  const auto text = [&](std::string_view literal) { return form.text(literal); };
  form.section("defaultTimer", text("Default Deferral Timer"));
  form.stepper("DeferralTimerDefault", text("Delay:"),
               text("How long Corvane waits before re-presenting the patch prompt when the user defers."));
  addFocus(form);
  addHardDeadline(form);
  addCadence(form);
  addBusinessHours(form);
}

}  // namespace corvane
