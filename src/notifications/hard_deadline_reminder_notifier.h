// Counts down to a forced install for a user who closed its prompt.
#pragma once

#include <cstdint>
#include <vector>

#include "base/calendar.h"
#include "core/logging/logging_service.h"
#include "core/preferences/preference_manager.h"
#include "notifications/crv_notification_router.h"

namespace corvane {

// Main thread. Remembers nothing; what it is given outlives it.
class HardDeadlineReminderNotifier {
 public:
  struct Reminder {
    std::int64_t minutesRemaining = 0;
    Date fireDate;
    friend bool operator==(const Reminder&, const Reminder&) = default;
  };

  HardDeadlineReminderNotifier(CRVNotificationRouter& router, const PreferenceManager& preferences, LogSink& log)
      : router_(router), preferences_(preferences), log_(log, "HardDeadlineReminderNotifier") {}

  // An hour, half an hour and five minutes before, as far as these are still ahead.
  [[nodiscard]] static std::vector<Reminder> reminders(Date enforcement, Date now);

  // A reminder that cannot be scheduled is logged, and the others go on. `calendar` words the date in the log.
  void schedule(const std::vector<Reminder>& reminders, Date enforcement, std::int64_t pendingCount,
                const Calendar& calendar);

  // Takes away all that may wait or stand, whoever scheduled them.
  void cancelAll();

 private:
  CRVNotificationRouter& router_;
  const PreferenceManager& preferences_;
  Logger log_;
};

}  // namespace corvane
