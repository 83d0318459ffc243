// A notification service that does as it is told, and tells what it was asked.
#pragma once

#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/main_queue.h"
#include "platform/user_notifications.h"

namespace corvane {

// Open fields: a test sets what the next call meets and reads what was asked. Answers come after `takes`.
class ScriptedUserNotifications final : public UserNotifications {
 public:
  struct Delivered {
    UserNotification notification;
    NotificationPresentationOptions shown;  // what the user saw and heard of it
  };

  explicit ScriptedUserNotifications(MainQueue& main) : main_(main) {}
  ~ScriptedUserNotifications() override;

  std::optional<Error> failure;           // of each add(); nothing is shown then
  std::map<std::string, Error> failures;  // of an add() under that identifier
  NotificationSettings current{.authorization = NotificationAuthorization::authorized,
                               .badge = NotificationSetting::enabled};
  NotificationSettings afterRequest{.authorization = NotificationAuthorization::authorized,
                                    .badge = NotificationSetting::enabled};
  Result<bool> grant = true;
  bool inFront = false;  // then the delegate is asked how a notification is shown, and without a banner none is
  Duration takes = Duration::zero();

  std::vector<UserNotification> added;  // every one that was asked for, in order, refused ones among them
  std::vector<NotificationOptions> requests;
  std::vector<NotificationCategory> categories;
  std::vector<std::string> cancelled;  // identifiers that removePending() and removeDelivered() named, in order

  // Those that wait for their time, and those on the screen, by identifier.
  [[nodiscard]] std::vector<std::string> pending() const;
  [[nodiscard]] std::vector<std::string> delivered() const;
  // The one that is shown under that identifier; null when there is none.
  [[nodiscard]] const Delivered* shown(const std::string& identifier) const;

  // The user chooses a notification that is shown, or one of its actions; it goes away then. Gives whether the delegate
  // was told and had called `done` when it returned.
  bool choose(const std::string& identifier, std::optional<std::string> action = std::nullopt);

  void add(UserNotification notification, Completion<Status> done) override;
  void removePending(const std::vector<std::string>& identifiers) override;
  void removeDelivered(const std::vector<std::string>& identifiers) override;
  void removeAllPending() override { pending_.clear(); }
  void removeAllDelivered() override { delivered_.clear(); }
  void settings(Completion<NotificationSettings> done) override;
  void requestAuthorization(NotificationOptions options, Completion<Result<bool>> done) override;
  void setCategories(std::vector<NotificationCategory> given) override { categories = std::move(given); }
  void setDelegate(UserNotificationDelegate* delegate) override { delegate_ = delegate; }

 private:
  // Holds a completion until its answer is due; gives it up when this dies before.
  template <class Answer>
  struct Waiting {
    explicit Waiting(Completion<Answer> call) : done(std::move(call)) {}
    ~Waiting() { done.abandon(); }
    Completion<Answer> done;
    Lease alarm;
  };
  template <class Answer>
  using WaitingList = std::list<Waiting<Answer>>;

  template <class Answer>
  void answer(WaitingList<Answer>& list, Completion<Answer> done, Answer value);
  [[nodiscard]] Status verdict(const std::string& identifier) const;
  void deliver(const UserNotification& notification);

  MainQueue& main_;
  UserNotificationDelegate* delegate_ = nullptr;
  std::map<std::string, Lease> pending_;
  std::map<std::string, Delivered> delivered_;
  WaitingList<Status> adding_;
  WaitingList<NotificationSettings> asking_;
  WaitingList<Result<bool>> requesting_;
};

}  // namespace corvane
