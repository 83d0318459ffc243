// What a click on a notification of the application leads to, and how one is shown while the application is in front.
#pragma once

#include "base/main_queue.h"
#include "base/notification_center.h"
#include "core/preferences/configuration.h"
#include "platform/user_notifications.h"

namespace corvane {

// Main thread. Made once, when the application has launched; the desktop is told of the one category then. Whoever
// wants to know of a click observes ShowDeferralPromptFromNotification.
class CRVNotificationDelegate final : public UserNotificationDelegate {
 public:
  // All outlive it; the center also outlives the turn after a click.
  CRVNotificationDelegate(UserNotifications& service, NotificationCenter& notifications, MainQueue& main,
                          const CorvaneConfiguration& config);
  ~CRVNotificationDelegate() override;
  CRVNotificationDelegate(const CRVNotificationDelegate&) = delete;
  CRVNotificationDelegate& operator=(const CRVNotificationDelegate&) = delete;

  // Any notification: a banner with its sound.
  NotificationPresentationOptions willPresent(const UserNotification& notification) override;
  // The notification and its button do the same; one that carries no intent does nothing.
  void didReceive(const NotificationResponse& response, Task done) override;

 private:
  UserNotifications& service_;
  NotificationCenter& notifications_;
  MainQueue& main_;
};

}  // namespace corvane
