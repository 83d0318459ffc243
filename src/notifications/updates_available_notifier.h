// Says that open applications need updating, and that closed ones wait for the power adapter: once for each rise,
// never again for the same.
#pragma once

#include <cstdint>

#include "core/logging/logging_service.h"
#include "core/preferences/preference_manager.h"
#include "core/records/updates_available.h"
#include "notifications/crv_notification_router.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/locale.h"

namespace corvane {

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
  void notify(const UpdatesAvailable& news);

  // A prompt ran out and has deferred by itself: tells the open applications, whatever was told before.
  void notifyDialogTimeoutDeferred(std::int64_t open, std::int64_t total, bool closedAppsHandledElsewhere);

 private:
  void tellOfACPower(std::int64_t waiting, const CorvaneConfiguration& config);
  void tellOfOpenApps(const UpdatesAvailable& news, const CorvaneConfiguration& config);
  void deliverToast(const UpdatesAvailable& news, const CorvaneConfiguration& config);

  Services s_;
  Logger log_;
};

}  // namespace corvane
