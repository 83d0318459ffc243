// Notifications by the service of the desktop session.
#pragma once

#include <filesystem>
#include <memory>

#include "base/main_queue.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/dbus/bus_link.h"
#include "platform/user_notifications.h"

namespace corvane {

// Why a notification was not shown; codes of BusError in this domain.
struct DesktopNotificationError {
  static constexpr const char* domain = "CRVNotifications";
};

// What is asked is carried out in the order asked, one after the other, so an answer also tells that all of before has
// gone out. When the service does not answer one, those that waited behind it fail with it; a service that comes back
// to life later takes away what was told to have failed. A notification with a delay waits in this process, by wall
// time, so that a machine that slept is not told of it later than was meant, and dies with it. A notification that was
// chosen goes away, also where the service would keep it.
class DesktopNotifications final : public UserNotifications {
 public:
  struct Surroundings {
    BusLink& session;
    MainQueue& main;
    const Clock& clock;
    const Application& application;  // asked whether it is in front
    std::filesystem::path folder;    // of this session's runtime: remembers here what is shown, for later processes
    Duration limit = 5s;             // how long the service may take to show one
    bool stay = false;               // on the screen until the user has seen to them
  };

  explicit DesktopNotifications(const Surroundings& surroundings);
  ~DesktopNotifications() override;
  DesktopNotifications(const DesktopNotifications&) = delete;
  DesktopNotifications& operator=(const DesktopNotifications&) = delete;

  // A delayed one is taken at once; that it cannot be shown when its time has come is told to nobody.
  void add(UserNotification notification, Completion<Status> done) override;
  void removePending(const std::vector<std::string>& identifiers) override;
  // Those that an earlier process of this session has shown among them.
  void removeDelivered(const std::vector<std::string>& identifiers) override;
  void removeAllPending() override;
  void removeAllDelivered() override;
  // Authorized where a service runs or could be started, denied elsewhere: the desktop knows no other permission.
  void settings(Completion<NotificationSettings> done) override;
  void requestAuthorization(NotificationOptions options, Completion<Result<bool>> done) override;
  void setCategories(std::vector<NotificationCategory> categories) override;
  void setDelegate(UserNotificationDelegate* delegate) override;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace corvane
