#include "platform/scripted/scripted_user_notifications.h"

#include <memory>
#include <utility>

namespace corvane {

ScriptedUserNotifications::~ScriptedUserNotifications() = default;

std::vector<std::string> ScriptedUserNotifications::pending() const {
  std::vector<std::string> identifiers;
  for (const auto& [identifier, alarm] : pending_) identifiers.push_back(identifier);
  return identifiers;
}

std::vector<std::string> ScriptedUserNotifications::delivered() const {
  std::vector<std::string> identifiers;
  for (const auto& [identifier, one] : delivered_) identifiers.push_back(identifier);
  return identifiers;
}

const ScriptedUserNotifications::Delivered* ScriptedUserNotifications::shown(const std::string& identifier) const {
  const auto found = delivered_.find(identifier);
  return found == delivered_.end() ? nullptr : &found->second;
}

bool ScriptedUserNotifications::choose(const std::string& identifier, std::optional<std::string> action) {
  const auto chosen = delivered_.extract(identifier);
  if (chosen.empty() || delegate_ == nullptr) return false;
  const auto told = std::make_shared<bool>(false);
  delegate_->didReceive({.notificationIdentifier = identifier,
                         .actionIdentifier = std::move(action),
                         .userInfo = chosen.mapped().notification.userInfo},
                        [told] { *told = true; });
  return *told;
}

Status ScriptedUserNotifications::verdict(const std::string& identifier) const {
  if (failure) return std::unexpected(*failure);
  if (const auto found = failures.find(identifier); found != failures.end()) return std::unexpected(found->second);
  return {};
}

void ScriptedUserNotifications::add(UserNotification notification, Completion<Status> done) {
  added.push_back(notification);
  auto status = verdict(notification.identifier);
  if (status) {
    pending_.erase(notification.identifier);
    if (notification.delay) {
      const auto identifier = notification.identifier;
      const auto delay = *notification.delay;
      pending_[identifier] = main_.after(delay, [this, waiting = std::move(notification)] {
        const auto due = pending_.extract(waiting.identifier);
        deliver(waiting);
      });
    } else {
      deliver(notification);
    }
  }
  answer(adding_, std::move(done), std::move(status));
}

void ScriptedUserNotifications::deliver(const UserNotification& notification) {
  NotificationPresentationOptions shown{.banner = true, .sound = notification.sound};
  if (inFront && delegate_ != nullptr) {
    shown = delegate_->willPresent(notification);
    shown.sound &= notification.sound;
    if (!shown.banner) return;
  }
  delivered_.insert_or_assign(notification.identifier, Delivered{.notification = notification, .shown = shown});
}

void ScriptedUserNotifications::removePending(const std::vector<std::string>& identifiers) {
  for (const auto& identifier : identifiers) {
    cancelled.push_back(identifier);
    pending_.erase(identifier);
  }
}

void ScriptedUserNotifications::removeDelivered(const std::vector<std::string>& identifiers) {
  for (const auto& identifier : identifiers) {
    cancelled.push_back(identifier);
    delivered_.erase(identifier);
  }
}

void ScriptedUserNotifications::settings(Completion<NotificationSettings> done) {
  answer(asking_, std::move(done), current);
}

void ScriptedUserNotifications::requestAuthorization(NotificationOptions options, Completion<Result<bool>> done) {
  requests.push_back(options);
  if (grant) current = afterRequest;
  answer(requesting_, std::move(done), grant);
}

template <class Answer>
void ScriptedUserNotifications::answer(WaitingList<Answer>& list, Completion<Answer> done, Answer value) {
  const auto place = list.emplace(list.end(), std::move(done));
  place->alarm = main_.after(takes, [&list, place, value = std::move(value)]() mutable {
    WaitingList<Answer> due;
    due.splice(due.begin(), list, place);
    place->done(std::move(value));
  });
}

}  // namespace corvane
