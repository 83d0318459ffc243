// What the user hears of updates outside the windows, over the notifications of this machine.
#pragma once

#include <cstdint>

#include "core/preferences/preference_manager.h"
#include "notifications/crv_notification_router.h"
#include "notifications/hard_deadline_reminder_notifier.h"
#include "notifications/updates_available_notifier.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "platform/locale.h"
#include "workflow/deferral_notices.h"

namespace corvane {

// Main thread. What cannot be delivered is logged and forgotten.
class DeferralNotifications final : public DeferralNotices {
 public:
  // All outlive it.
  struct Services {
    CRVNotificationRouter& router;
    PreferenceManager& preferences;
    const Application& application;
    Clock& clock;
    Locale& locale;
    Entropy& entropy;
    LogSink& log;
  };
  explicit DeferralNotifications(Services services);

  void notifyUpdatesAvailable(const UpdatesAvailable& updates) override { updates_.notify(updates); }
  void dismissUpdateNotifications(Task done) override;
  void notifyDialogTimeoutDeferred(std::int64_t open, std::int64_t total, bool closedAppsHandledElsewhere) override;
  void notifyDeferralEnded(std::int64_t pending) override;
  void scheduleReminders(Date enforcement, std::int64_t pending) override;
  void cancelReminders() override;

 private:
  Services s_;
  HardDeadlineReminderNotifier reminders_;
  UpdatesAvailableNotifier updates_;
};

}  // namespace corvane
