// The one way of every notification: to the desktop under the application's own identity, or to the notifier, whose
// notifications stay on screen. Holds no state but the launches that somebody waits for.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/error.h"
#include "base/lifeline.h"
#include "base/main_queue.h"
#include "base/task.h"
#include "core/logging/logging_service.h"
#include "core/preferences/configuration.h"
#include "notifications/notification_content.h"
#include "notifications/persistent_notification_request.h"
#include "platform/child_processes.h"
#include "platform/clock.h"
#include "platform/own_bundle.h"
#include "platform/user_notifications.h"

namespace corvane {

// Hears in a later turn on the main thread whether a notification was handed on. May be empty; is dropped with the
// notification that comes too late.
using Delivered = std::move_only_function<void(Status)>;

// Writes the warning "<what>: <error>" when it failed.
[[nodiscard]] Delivered warningOnFailure(Logger log, std::string what);

// Main thread.
class CRVNotificationRouter {
 public:
  static constexpr const char* errorDomain = "CRVNotificationRouter";
  static constexpr Duration kExitLimit = 10s;      // of a launch that somebody waits for
  static constexpr Duration kTerminateLimit = 1s;  // from the polite signal to the forced one
  static constexpr Duration kLeastDelay = 1s;      // what the desktop takes for a timer

  // All outlive the router.
  struct Machine {
    UserNotifications& service;
    ChildProcesses& children;
    MainQueue& main;
    const Clock& clock;
    const OwnBundle& bundle;
    LogSink& log;
    // The notifier's: what leads to the user's session.
    std::vector<std::pair<std::string, std::string>> environment;
  };
  explicit CRVNotificationRouter(Machine machine);

  // The policy of `config` decides the way. On the desktop's own way a fire date that is not ahead drops the
  // notification in silence; the notifier gets it as it is. Where the notifier cannot be launched there is no other
  // way, only the error, which is logged.
  void post(const NotificationContent& content, const CorvaneConfiguration& config, Delivered done = {});

  // Starts the notifier and does not wait for its end.
  void launchPersistentHelper(const PersistentNotificationRequest& request, Delivered done = {});
  // `done` runs in a later turn, when the notifier has ended, was stopped after the limits above, or could not be
  // launched.
  void launchPersistentHelperAndWait(const PersistentNotificationRequest& request, Task done);

  // These go to both, since the policy may have changed since the notification was posted. The type is of no effect.
  void cancel(CRVNotificationType type, const std::vector<std::string>& identifiers);
  // What is pending stays. With `done`, which runs in a later turn, the notifier is waited for.
  void clearDelivered();
  void clearDelivered(Task done);
  void clearAll(Task done);

 private:
  struct Waiting {
    std::shared_ptr<ChildHandle> child;
    Task done;
    Lease limit;
  };
  using Place = std::list<Waiting>::iterator;

  [[nodiscard]] Result<ChildSpec> notifierTask(const PersistentNotificationRequest& request) const;
  void limitReached(Place place);
  void ended(Place place, const Result<ChildExit>& exit);

  Machine machine_;
  Logger log_;
  std::list<Waiting> waiting_;
  Lifeline lifeline_;
};

}  // namespace corvane
