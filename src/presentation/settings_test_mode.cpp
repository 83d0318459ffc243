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
    made.problem = form.localized("This is no date. Enter it like 2026-11-22 17:00; until then the last one counts.");
}

}  // namespace

void addAdminTestMode(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  const auto& state = *form.in.admin;
  form.section(
      "adminTestMode", localized("⚠️ Admin Test Mode"),
      localized("These controls write directly to deferral state and bypass normal cycle guards. Never enable this "
                "on production fleets."));
  form.note("workflowTriggers", localized("Workflow Triggers"));
  form.button(
      SettingsKeys::updateAll, localized("Trigger Update All"), true,
      localized(
          "Runs the same Update All flow as the dashboard button, branching on the current deadline/deferral state."));
  form.button(
      SettingsKeys::hardPrompt, localized("Trigger Hard Deadline Prompt"), true,
      localized("Sets HardDeferralDate to 1 second in the past, then calls Update All so the .hard prompt is forced "
                "immediately."));
  form.button(
      SettingsKeys::testNotification, localized("Post Test Notification"), true,
      localized("Delivers a local test notification without going through the real update-available pipeline."));
  form.button(
      SettingsKeys::resetDeferrals, localized("Reset Deferral State"), true,
      localized("Clears focus/hard deferral counters and day-based deadline dates, as if a patch run just completed."));
  dateField(form, SettingsKeys::nextLaunch, localized("Next Auto-Launch Override"), state.nextLaunchOverride);
  form.button(SettingsKeys::applyNextLaunch, localized("Apply Next Auto-Launch Override"), true,
              localized("Overrides when the deferral watcher will next re-present the prompt or force-install."));
  form.note("deferralCounters", localized("Deferral Counters"));
  counter(form, SettingsKeys::focusCount, localized("Focus deferral count:"), state.focusCount);
  counter(form, SettingsKeys::hardCount, localized("Hard deferral count:"), state.hardCount);
  dateField(form, SettingsKeys::anchor, localized("Patch Cycle Anchor"), state.anchorOverride);
  form.button(SettingsKeys::applyAnchor, localized("Apply Anchor Override"), true,
              localized("Apply explicitly to override the configured cadence. Use Configured Cadence restores the most "
                        "recent configured weekday or monthly anchor."));
  form.button(SettingsKeys::configuredCadence, localized("Use Configured Cadence"));
  if (state.lastActionMessage) form.note("lastActionMessage", *state.lastActionMessage);
}

}  // namespace corvane
