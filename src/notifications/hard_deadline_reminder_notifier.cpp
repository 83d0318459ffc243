#include "notifications/hard_deadline_reminder_notifier.h"

#include <fmt/format.h>

#include <array>
#include <chrono>

#include "base/localized.h"

namespace corvane {

namespace {

constexpr std::array<std::int64_t, 3> kLeadMinutes = {60, 30, 5};

std::string identifierOf(std::int64_t minutes) { return fmt::format("crv.hardDeadlineReminder.{}m", minutes); }

std::string bodyOf(std::int64_t pendingCount) {
  if (pendingCount == 1)
    return localized(
        "1 required update will install automatically when the countdown ends. Open Corvane to install now.");
  return localized(
      "{} required updates will install automatically when the countdown ends. Open Corvane to install now.",
      pendingCount);
}

}  // namespace

std::vector<HardDeadlineReminderNotifier::Reminder> HardDeadlineReminderNotifier::reminders(Date enforcement,
                                                                                            Date now) {
  std::vector<Reminder> ahead;
  for (const auto minutes : kLeadMinutes) {
    const auto fireDate = enforcement - std::chrono::minutes(minutes);
    if (fireDate > now) ahead.push_back({.minutesRemaining = minutes, .fireDate = fireDate});
  }
  return ahead;
}

void HardDeadlineReminderNotifier::schedule(const std::vector<Reminder>& reminders, Date enforcement,
                                            std::int64_t pendingCount, const Calendar& calendar) {
  for (const auto& reminder : reminders)
    router_.post(
        {.type = CRVNotificationType::hardDeadlineReminder,
         .identifier = identifierOf(reminder.minutesRemaining),
         .title = localized("Updates install in {} minutes", reminder.minutesRemaining),
         .body = bodyOf(pendingCount),
         .sound = true,
         .showsDeferralPrompt = true,
         .fireDate = reminder.fireDate},
        preferences_.loadConfiguration(),
        warningOnFailure(log_, fmt::format("Could not schedule the {}-minute reminder", reminder.minutesRemaining)));
  log_.info(fmt::format("Scheduled {} reminder(s) for hard-deadline enforcement at {}.", reminders.size(),
                        calendar.iso8601(enforcement)));
}

void HardDeadlineReminderNotifier::cancelAll() {
  std::vector<std::string> identifiers;
  for (const auto minutes : kLeadMinutes) identifiers.push_back(identifierOf(minutes));
  router_.cancel(CRVNotificationType::hardDeadlineReminder, identifiers);
}

}  // namespace corvane
