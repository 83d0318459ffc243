#include "presentation/settings_parts.h"

namespace corvane {
namespace {

SettingsControl& counter(SettingsForm& form, std::string_view key, std::string label, std::int64_t value) {
  auto& made = form.control(ControlKind::stepper, key, std::move(label), form.in.locale.number(value));
  const auto& rule = *findStepper(key);
  made.mayDecrease = stepped(rule, value, -1) != value;
  made.mayIncrease = stepped(rule, value, 1) != value;
  return made;
}

void dateField(SettingsForm& form, std::string_view key, std::string label, Date date) {
  const auto calendar = form.in.locale.calendar();
  auto& made = form.control(ControlKind::date, key, std::move(label), dateFieldText(date, calendar));
  const auto draft = form.in.window.drafts.find(key);
  if (draft == form.in.window.drafts.end()) return;
  made.value = draft->second;
  if (!dateFromField(draft->second, calendar))
    made.problem = form.text("This is no date. Enter it like 2026-11-22 17:00; until then the last one counts.");
}

}  // namespace

void addAdminTestMode(SettingsForm& form) {
  const auto text = [&](std::string_view literal) { return form.text(literal); };
  const auto& state = *form.in.admin;
  form.section("adminTestMode", text("⚠️ Admin Test Mode"),
               text("These controls write directly to deferral state and bypass normal cycle guards. Never enable this "
                    "on production fleets."));
  form.note("workflowTriggers", text("Workflow Triggers"));
  form.button(
      SettingsKeys::updateAll, text("Trigger Update All"), true,
      text("Runs the same Update All flow as the dashboard button, branching on the current deadline/deferral state."));
  form.button(SettingsKeys::hardPrompt, text("Trigger Hard Deadline Prompt"), true,
              text("Sets HardDeferralDate to 1 second in the past, then calls Update All so the .hard prompt is forced "
                   "immediately."));
  form.button(SettingsKeys::testNotification, text("Post Test Notification"), true,
              text("Delivers a local test notification without going through the real update-available pipeline."));
  form.button(
      SettingsKeys::resetDeferrals, text("Reset Deferral State"), true,
      text("Clears focus/hard deferral counters and day-based deadline dates, as if a patch run just completed."));
  dateField(form, SettingsKeys::nextLaunch, text("Next Auto-Launch Override"), state.nextLaunchOverride);
  form.button(SettingsKeys::applyNextLaunch, text("Apply Next Auto-Launch Override"), true,
              text("Overrides when the deferral watcher will next re-present the prompt or force-install."));
  form.note("deferralCounters", text("Deferral Counters"));
  counter(form, SettingsKeys::focusCount, text("Focus deferral count:"), state.focusCount);
  counter(form, SettingsKeys::hardCount, text("Hard deferral count:"), state.hardCount);
  dateField(form, SettingsKeys::anchor, text("Patch Cycle Anchor"), state.anchorOverride);
  form.button(SettingsKeys::applyAnchor, text("Apply Anchor Override"), true,
              text("Apply explicitly to override the configured cadence. Use Configured Cadence restores the most "
                   "recent configured weekday or monthly anchor."));
  form.button(SettingsKeys::configuredCadence, text("Use Configured Cadence"));
  if (state.lastActionMessage) form.note("lastActionMessage", *state.lastActionMessage);
}

}  // namespace corvane
