#include "notifier/notifier.h"

#include <utility>

#include "notifications/notification_content.h"

namespace corvane {

namespace {

using Request = PersistentNotificationRequest;
using Operation = Request::Operation;

constexpr auto kDomain = "CRVNotifier";
constexpr int kNotShowable = 1;

// Of notifications that come without one: theirs too have the button.
constexpr const char* kPlainCategory = "crv.open.category";

}  // namespace

Status checkShowable(const Request& request) {
  if (request.operation != Operation::post) return {};
  if (request.identifier.value_or("").empty())
    return failure(kDomain, kNotShowable, "the notification has no identifier");
  if (request.title.value_or("").empty() && request.body.value_or("").empty())
    return failure(kDomain, kNotShowable, "the notification has neither title nor body");
  return {};
}

Notifier::Notifier(Machine machine, Events events) : machine_(machine), events_(std::move(events)) {
  machine_.service.setDelegate(this);
}

Notifier::~Notifier() { machine_.service.setDelegate(nullptr); }

Status Notifier::handle(const Request& request) {
  if (auto showable = checkShowable(request); !showable) return showable;
  switch (request.operation) {
    case Operation::post:
      post(request);
      break;
    case Operation::cancel:
      for (const auto& identifier : request.identifiers) {
        pending_.erase(identifier);
        shown_.erase(identifier);
      }
      machine_.service.removeDelivered(request.identifiers);
      break;
    case Operation::clearAll:
      pending_.clear();
      [[fallthrough]];
    case Operation::clearDelivered:
      shown_.clear();
      machine_.service.removeAllDelivered();
      break;
  }
  lookWhatIsLeft();
  return {};
}

void Notifier::post(const Request& request) {
  const auto& identifier = *request.identifier;
  pending_.erase(identifier);
  if (!request.fireDate || *request.fireDate <= machine_.clock.now()) return show(request);
  pending_[identifier] = machine_.main.at(*request.fireDate, [this, request] {
    pending_.erase(*request.identifier);
    show(request);
  });
}

void Notifier::show(const Request& request) {
  UserNotification notification{.identifier = *request.identifier,
                                .title = request.title.value_or(""),
                                .body = request.body.value_or(""),
                                .header = request.displayHeader.value_or(""),
                                .sound = request.sound,
                                .categoryIdentifier = request.categoryIdentifier,
                                .userInfo = request.userInfo};
  if (request.openActionTitle) {
    notification.categoryIdentifier = request.categoryIdentifier.value_or(kPlainCategory);
    setButton(*notification.categoryIdentifier, *request.openActionTitle);
  }
  const auto number = ++lastNumber_;
  shown_[notification.identifier] = number;
  const auto identifier = notification.identifier;
  machine_.service.add(std::move(notification), lifeline_.guard([this, identifier, number](const Status& added) {
    if (added) return;
    const auto found = shown_.find(identifier);
    if (found != shown_.end() && found->second == number) shown_.erase(found);
    events_.failed(added.error());
    lookWhatIsLeft();
  }));
}

void Notifier::setButton(const std::string& category, const std::string& title) {
  buttons_[category] = title;
  std::vector<NotificationCategory> categories;
  for (const auto& [identifier, words] : buttons_)
    categories.push_back({.identifier = identifier,
                          .actions = {{.identifier = std::string(DeferralPromptLink::action), .title = words}}});
  machine_.service.setCategories(std::move(categories));
}

NotificationPresentationOptions Notifier::willPresent(const UserNotification&) {
  return {.banner = true, .sound = true};
}

void Notifier::didReceive(const NotificationResponse& response, Task done) {
  machine_.main.post(lifeline_.guard([this, userInfo = response.userInfo] { events_.chosen(userInfo); }));
  if (done) done();
  didClose(response.notificationIdentifier);
}

void Notifier::didClose(const std::string& identifier) {
  shown_.erase(identifier);
  lookWhatIsLeft();
}

void Notifier::lookWhatIsLeft() {
  machine_.main.post(lifeline_.guard([this] {
    if (hasNothingLeft()) events_.nothingLeft();
  }));
}

}  // namespace corvane
