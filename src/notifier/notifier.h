// What the notifier has waiting and on the screen. Knows neither the bus nor the process that it lives in.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/error.h"
#include "base/lease.h"
#include "base/lifeline.h"
#include "base/main_queue.h"
#include "notifications/persistent_notification_request.h"
#include "platform/clock.h"
#include "platform/user_notifications.h"

namespace corvane {

// Fails for a notification that nobody could take away again, and for one that says nothing.
[[nodiscard]] Status checkShowable(const PersistentNotificationRequest& request);

// Main thread.
class Notifier final : public UserNotificationDelegate {
 public:
  using UserInfo = std::map<std::string, std::string>;
  struct Machine {
    UserNotifications& service;
    MainQueue& main;
    const Clock& clock;
  };
  // Called in a turn of their own.
  struct Events {
    std::function<void(const UserInfo&)> chosen;  // the user chose a notification or its button
    std::function<void(const Error&)> failed;     // one could not be shown
    std::function<void()> nothingLeft;            // may be called again
  };
  Notifier(Machine machine, Events events);
  ~Notifier() override;

  // A fire date that is ahead is waited for by wall time, over sleep too; any other is now. One under the same
  // identifier is replaced.
  Status handle(const PersistentNotificationRequest& request);

  // Neither waits nor stands any.
  [[nodiscard]] bool hasNothingLeft() const { return pending_.empty() && shown_.empty(); }

  NotificationPresentationOptions willPresent(const UserNotification& notification) override;
  void didReceive(const NotificationResponse& response, Task done) override;
  void didClose(const std::string& identifier) override;

 private:
  void post(const PersistentNotificationRequest& request);
  void show(const PersistentNotificationRequest& request);
  void setButton(const std::string& category, const std::string& title);
  void lookWhatIsLeft();

  Machine machine_;
  Events events_;
  std::map<std::string, Lease> pending_;
  std::map<std::string, std::uint64_t> shown_;  // by a number that tells one from a later one in its place
  std::map<std::string, std::string> buttons_;  // their titles, by category
  std::uint64_t lastNumber_ = 0;
  Lifeline lifeline_;
};

}  // namespace corvane
