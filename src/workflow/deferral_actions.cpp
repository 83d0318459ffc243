#include "workflow/deferral_actions.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/policies/deferral_manager.h"

namespace corvane {

DeferralActions::DeferralActions(const RoomContext& context, DeferralFields& fields) : c_(context), fields_(fields) {}

void DeferralActions::load() {
  auto& store = c_.services.preferences;
  fields_.currentHardDeadlineDate =
      DeferralManager(store.loadConfiguration(), store, c_.services.clock, c_.services.locale.calendar())
          .hardDeadlineDate();
}

void DeferralActions::dismissDeferralPrompt() {
  c_.services.preferences.clearHardDeadlineDialogDismissedUntil();
  c_.services.prompts.cancelReminders();
  fields_.showDeferralPrompt = false;
  c_.services.prompts.hideStandaloneWindow();
  c_.crossings.fieldsChanged();
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

}  // namespace corvane
