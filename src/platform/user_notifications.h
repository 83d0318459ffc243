// The service that shows notifications in the desktop's own way, under the identity of the program that asks.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/date.h"
#include "base/error.h"
#include "base/task.h"

namespace corvane {

struct UserNotification {
  std::string identifier;  // one that is pending or shown under it is replaced
  std::string title;
  std::string body;
  std::string header;  // a line above the title, where the service has one; may be empty
  bool sound = false;
  std::optional<std::string> categoryIdentifier;
  std::map<std::string, std::string> userInfo;  // comes back with the response
  std::optional<Duration> delay;                // until it is shown; absent: at once
  friend bool operator==(const UserNotification&, const UserNotification&) = default;
};

struct NotificationAction {
  std::string identifier;
  std::string title;
  friend bool operator==(const NotificationAction&, const NotificationAction&) = default;
};

struct NotificationCategory {
  std::string identifier;
  std::vector<NotificationAction> actions;
  friend bool operator==(const NotificationCategory&, const NotificationCategory&) = default;
};

// What the user chose: the notification itself, or one of its actions. Closing it is no response.
struct NotificationResponse {
  std::string notificationIdentifier;
  std::optional<std::string> actionIdentifier;  // absent: the notification itself
  std::map<std::string, std::string> userInfo;
};

// How a notification is shown while the application is in front.
struct NotificationPresentationOptions {
  bool banner = false;
  bool sound = false;
  friend bool operator==(const NotificationPresentationOptions&, const NotificationPresentationOptions&) = default;
};

// The numbers are those that log lines tell.
enum class NotificationAuthorization { notDetermined = 0, denied = 1, authorized = 2, provisional = 3, ephemeral = 4 };
enum class NotificationSetting { notSupported = 0, disabled = 1, enabled = 2 };

struct NotificationSettings {
  NotificationAuthorization authorization = NotificationAuthorization::notDetermined;
  NotificationSetting badge = NotificationSetting::notSupported;
  friend bool operator==(const NotificationSettings&, const NotificationSettings&) = default;
};

struct NotificationOptions {
  bool badge = false;
  bool sound = false;
  bool alert = false;
  friend bool operator==(const NotificationOptions&, const NotificationOptions&) = default;
};

// Hears what happens to notifications. Called on the main thread.
class UserNotificationDelegate {
 public:
  virtual ~UserNotificationDelegate() = default;
  virtual NotificationPresentationOptions willPresent(const UserNotification& notification) = 0;
  // `done` is called at once; what the response leads to may follow.
  virtual void didReceive(const NotificationResponse& response, Task done) = 0;
  // One that was shown has gone, and was neither chosen nor removed here: the user has closed it, or the service went.
  virtual void didClose(const std::string& /*identifier*/) {}
};

// Main thread. What is asked is carried out in the order asked; every completion runs once, in a later turn, and tells
// that all of before has gone out too.
class UserNotifications {
 public:
  virtual ~UserNotifications() = default;

  // Fails when there is no service, and when it refuses or does not answer.
  virtual void add(UserNotification notification, Completion<Status> done) = 0;
  virtual void removePending(const std::vector<std::string>& identifiers) = 0;
  virtual void removeDelivered(const std::vector<std::string>& identifiers) = 0;
  virtual void removeAllPending() = 0;
  virtual void removeAllDelivered() = 0;

  virtual void settings(Completion<NotificationSettings> done) = 0;
  // Whether what is asked for is granted.
  virtual void requestAuthorization(NotificationOptions options, Completion<Result<bool>> done) = 0;

  // Replaces the set of before.
  virtual void setCategories(std::vector<NotificationCategory> categories) = 0;
  // It outlives this or is taken away with null.
  virtual void setDelegate(UserNotificationDelegate* delegate) = 0;
};

}  // namespace corvane
