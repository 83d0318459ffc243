#include "background/notification_authorization.h"

#include <fmt/format.h>

namespace corvane {
namespace {

std::string_view outcome(bool granted) { return granted ? "granted" : "denied"; }

void requestAll(UserNotifications& center, const Logger& log) {
  center.requestAuthorization({.badge = true, .sound = true, .alert = true}, [log](Result<bool> granted) {
    if (granted)
      log.info(fmt::format("Notification authorization {} for [alert, sound, badge].", outcome(*granted)));
    else
      log.warning("Notification authorization request failed: " + granted.error().text);
  });
}

void requestBadge(UserNotifications& center, const Logger& log) {
  center.requestAuthorization({.badge = true}, [log](Result<bool> granted) {
    if (granted)
      log.info(fmt::format(".badge authorization {}.", outcome(*granted)));
    else
      log.warning("Failed to extend notification authorization to include .badge: " + granted.error().text);
  });
}

}  // namespace

void authorizeNotifications(UserNotifications& center, const Logger& log) {
  center.settings([&center, log](const NotificationSettings& settings) {
    switch (settings.authorization) {
      case NotificationAuthorization::notDetermined:
        return requestAll(center, log);
      case NotificationAuthorization::denied:
        return;
      case NotificationAuthorization::authorized:
      case NotificationAuthorization::provisional:
      case NotificationAuthorization::ephemeral:
        if (settings.badge == NotificationSetting::enabled) return;
        log.info(fmt::format("Existing notification authorization is missing .badge (badgeSetting={}); extending…",
                             static_cast<int>(settings.badge)));
        return requestBadge(center, log);
    }
  });
}

}  // namespace corvane
