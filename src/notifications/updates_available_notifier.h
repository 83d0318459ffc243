// Says that open applications need updating, and that closed ones wait for the power adapter: once for each rise,
// never again for the same.
#pragma once

#include <cstdint>

#include "core/logging/logging_service.h"
#include "core/preferences/preference_manager.h"
#include "notifications/crv_notification_router.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/locale.h"

namespace corvane {

// Of `total` pending updates `open` are of open applications.
struct PendingUpdatesNews {
  std::int64_t open = 0;
  std::int64_t total = 0;
  bool closedAppsHandledElsewhere = false;  // another process patches the closed ones
  bool closedAppsWaitForACPower = false;
};

// Main thread. What it remembers lies in the preference store; what it is given outlives it.
class UpdatesAvailableNotifier {
 public:
  struct Services {
    CRVNotificationRouter& router;
    PreferenceManager& preferences;
    const Application& application;
    const Clock& clock;
    const Locale& locale;
    LogSink& log;
  };
  explicit UpdatesAvailableNotifier(Services services) : s_(services), log_(services.log, "UpdatesAvailableNotifier") {}

  // Compares with the counts told before. While the application is in front a rise is only remembered; a cycle that is
  // complete changes nothing.
  void notify(const PendingUpdatesNews& news);

  // A prompt ran out and has deferred by itself: tells the open applications, whatever was told before.
  void notifyDialogTimeoutDeferred(std::int64_t open, std::int64_t total, bool closedAppsHandledElsewhere);

 private:
  void tellOfACPower(std::int64_t waiting, const CorvaneConfiguration& config);
  void tellOfOpenApps(const PendingUpdatesNews& news, const CorvaneConfiguration& config);
  void deliverToast(const PendingUpdatesNews& news, const CorvaneConfiguration& config);

  Services s_;
  Logger log_;
};

}  // namespace corvane
