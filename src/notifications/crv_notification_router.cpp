#include "notifications/crv_notification_router.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "base/localized.h"
#include "core/preferences/display_title.h"

namespace corvane {

namespace {

using Request = PersistentNotificationRequest;

constexpr int kMissing = 1;

bool isExecutableFile(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored) && ::access(path.c_str(), X_OK) == 0;
}

void logLaunchFailure(const Logger& log, const Error& error) {
  log.error("Could not launch persistent notifier: " + error.text);
}

Request worded(const NotificationContent& content, const CorvaneConfiguration& config) {
  const AppDisplayTitle title(config);
  Request request{.operation = Request::Operation::post,
                  .identifier = content.identifier,
                  .title = title.userFacing(content.title),
                  .body = title.userFacing(content.body),
                  .sound = content.sound,
                  .fireDate = content.fireDate,
                  .displayHeader = title.current(),
                  .openActionTitle = title.userFacing(localized(kOpenActionTitle))};
  if (content.showsDeferralPrompt) {
    request.categoryIdentifier = DeferralPromptLink::category;
    request.userInfo.emplace(DeferralPromptLink::intentKey, DeferralPromptLink::intent);
  }
  return request;
}

}  // namespace

Delivered warningOnFailure(Logger log, std::string what) {
  return [log = std::move(log), what = std::move(what)](const Status& delivered) {
    if (!delivered) log.warning(what + ": " + delivered.error().text);
  };
}

CRVNotificationRouter::CRVNotificationRouter(Machine machine)
    : machine_(std::move(machine)), log_(machine_.log, "CRVNotificationRouter") {}

void CRVNotificationRouter::post(const NotificationContent& content, const CorvaneConfiguration& config,
                                 Delivered done) {
  auto request = worded(content, config);
  if (config.notificationPolicy.presentationFor(content.type) == CRVNotificationPresentation::persistent)
    return launchPersistentHelper(request, std::move(done));

  UserNotification notification{.identifier = std::move(*request.identifier),
                                .title = std::move(*request.title),
                                .body = std::move(*request.body),
                                .header = std::move(*request.displayHeader),
                                .sound = request.sound,
                                .categoryIdentifier = std::move(request.categoryIdentifier),
                                .userInfo = std::move(request.userInfo)};
  if (request.fireDate) {
    const auto left = *request.fireDate - machine_.clock.now();
    if (left <= Duration::zero()) return;
    notification.delay = std::max(left, Duration(kLeastDelay));
  }
  machine_.service.add(std::move(notification), [done = std::move(done)](Status delivered) mutable {
    if (done) done(std::move(delivered));
  });
}

Result<ChildSpec> CRVNotificationRouter::notifierTask(const Request& request) const {
  const auto executable =
      machine_.bundle.path() / "Contents/Helpers" / "Corvane Notification.app" / "Contents/MacOS/Corvane Notification";
  if (!isExecutableFile(executable))
    return failure(errorDomain, kMissing, "Persistent notifier is missing at " + executable.string());
  return ChildSpec{
      .executable = executable, .arguments = {"--request", request.encoded()}, .environment = machine_.environment};
}

void CRVNotificationRouter::launchPersistentHelper(const Request& request, Delivered done) {
  auto task = notifierTask(request);
  // Both the launch and the end of a child that was never launched may have to tell.
  const auto told = std::make_shared<Delivered>(std::move(done));
  const auto tell = [told](const Status& launched) {
    if (auto call = std::exchange(*told, nullptr)) call(launched);
  };
  if (!task) {
    logLaunchFailure(log_, task.error());
    return machine_.main.post([tell, error = task.error()] { tell(std::unexpected(error)); });
  }
  task->detached = true;
  const auto child = machine_.children.start(std::move(*task), {}, [log = log_, tell](const Result<ChildExit>& exit) {
    if (exit) return;
    logLaunchFailure(log, exit.error());
    tell(std::unexpected(exit.error()));
  });
  if (child->pid() != 0) machine_.main.post([tell] { tell({}); });
}

void CRVNotificationRouter::launchPersistentHelperAndWait(const Request& request, Task done) {
  auto task = notifierTask(request);
  if (!task) {
    logLaunchFailure(log_, task.error());
    if (done) machine_.main.post(std::move(done));
    return;
  }
  const auto place = waiting_.insert(waiting_.end(), Waiting{.done = std::move(done)});
  place->child = machine_.children.start(
      std::move(*task), {}, lifeline_.guard([this, place](const Result<ChildExit>& exit) { ended(place, exit); }));
  place->limit = machine_.main.after(kExitLimit, [this, place] { limitReached(place); });
}

void CRVNotificationRouter::limitReached(Place place) {
  log_.error("Persistent notifier did not exit; stopping it.");
  place->limit = machine_.main.after(kTerminateLimit, [child = place->child] { child->kill(); });
  place->child->terminate();
}

void CRVNotificationRouter::ended(Place place, const Result<ChildExit>& exit) {
  if (!exit) logLaunchFailure(log_, exit.error());
  auto done = std::move(place->done);
  waiting_.erase(place);
  if (done) done();
}

void CRVNotificationRouter::cancel(CRVNotificationType, const std::vector<std::string>& identifiers) {
  machine_.service.removePending(identifiers);
  machine_.service.removeDelivered(identifiers);
  launchPersistentHelper({.operation = Request::Operation::cancel, .identifiers = identifiers});
}

void CRVNotificationRouter::clearDelivered() {
  machine_.service.removeAllDelivered();
  launchPersistentHelper({.operation = Request::Operation::clearDelivered});
}

void CRVNotificationRouter::clearDelivered(Task done) {
  machine_.service.removeAllDelivered();
  launchPersistentHelperAndWait({.operation = Request::Operation::clearDelivered}, std::move(done));
}

void CRVNotificationRouter::clearAll(Task done) {
  machine_.service.removeAllPending();
  machine_.service.removeAllDelivered();
  launchPersistentHelperAndWait({.operation = Request::Operation::clearAll}, std::move(done));
}

}  // namespace corvane
