#include "platform/dbus/desktop_notifications.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/lifeline.h"
#include "platform/dbus/bus_call.h"
#include "platform/dbus/bus_name_watch.h"
#include "platform/dbus/notification_words.h"
#include "platform/dbus/shown_notifications.h"

namespace corvane {

namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kPath = "/org/freedesktop/Notifications";
constexpr const char* kFile = "corvane-notifications.json";
constexpr std::int32_t kAsLongAsTheServiceLikes = -1;
constexpr std::int32_t kForGood = 0;
// Services that heed no time keep what is critical.
constexpr std::uint8_t kCriticalUrgency = 2;
// How long a service that did not answer in time is still listened to, so that what it shows late is taken away.
constexpr Duration kLateAnswers = 120s;

using Identifiers = std::vector<std::string>;

BusCall toService(const char* method, const std::string& owner = kService) {
  return {.object = {.owner = owner, .path = kPath, .interface = kService}, .method = method};
}

Error notificationError(const Error& error) {
  const auto text = [&]() -> std::string {
    switch (error.code) {
      case BusError::noBus:
        return "There is no desktop session to show notifications in.";
      case BusError::noService:
        return "No notification service runs in this desktop session.";
      case BusError::noAnswer:
        return "The desktop's notification service does not answer.";
      case BusError::refused:
      case BusError::forbidden:
      case BusError::unknown:
        return "The desktop's notification service refused: " + error.text;
      default:
        return "The desktop's notification service answers in a form that is not agreed: " + error.text;
    }
  }();
  return {.domain = DesktopNotificationError::domain, .code = error.code, .text = text};
}

Error silence() { return {.domain = BusError::domain, .code = BusError::noAnswer, .text = ""}; }

std::map<std::string, sdbus::Variant> variants(const std::map<std::string, NotificationWords::Hint>& hints) {
  std::map<std::string, sdbus::Variant> values;
  for (const auto& [name, hint] : hints)
    values.emplace(name, std::visit([](const auto& value) { return sdbus::Variant(value); }, hint));
  return values;
}

// What was asked. Completions that nobody will answer are given up.
struct Show {
  UserNotification notification;
  Completion<Status> done;  // empty for one that waited for its time
};
struct Take {
  Completion<Status> done;  // of one whose time has not come
};
struct Remove {
  std::optional<Identifiers> identifiers;  // absent: all
};
struct Ask {
  Completion<NotificationSettings> done;
};
struct Request {
  Completion<Result<bool>> done;
};

using What = std::variant<Show, Take, Remove, Ask, Request>;

class Order {
 public:
  explicit Order(What what) : what_(std::move(what)) {}
  ~Order() {
    std::visit(
        [](auto& what) {
          if constexpr (requires { what.done; }) what.done.abandon();
        },
        what_);
  }
  Order(Order&&) = default;
  Order& operator=(Order&&) = delete;

  [[nodiscard]] What& what() { return what_; }

 private:
  What what_;
};

}  // namespace

class DesktopNotifications::Impl {
 public:
  explicit Impl(const Surroundings& surroundings)
      : session_(surroundings.session),
        main_(surroundings.main),
        clock_(surroundings.clock),
        application_(surroundings.application),
        limit_(surroundings.limit),
        stay_(surroundings.stay),
        shown_(surroundings.folder / kFile),
        server_(session_, kService, [this] { lookAgain(); }) {
    const auto rule = std::string("type='signal',sender='") + kService + "',interface='" + kService + "',member='";
    chosen_ = session_.subscribe(rule + "ActionInvoked'", [this](sdbus::Message& message) {
      std::uint32_t number = 0;
      std::string action;
      message >> number >> action;
      if (shown_.areOf(run(message.getSender()))) chosen(message.getSender(), number, action);
    });
    closed_ = session_.subscribe(rule + "NotificationClosed'", [this](sdbus::Message& message) {
      std::uint32_t number = 0;
      message >> number;
      if (!shown_.areOf(run(message.getSender()))) return;
      if (const auto identifier = shown_.identifierOf(number)) went(*identifier);
    });
    connection_ = session_.watch([this](bool connected) {
      bus_.reset();
      if (connected)
        askBus();
      else
        busIs("");
    });
  }

  void add(UserNotification notification, Completion<Status> done) {
    pending_.erase(notification.identifier);
    if (!notification.delay) return order(Show{.notification = std::move(notification), .done = std::move(done)});
    const auto identifier = notification.identifier;
    const auto delay = *notification.delay;
    pending_[identifier] = main_.at(clock_.now() + delay, [this, waiting = std::move(notification)]() mutable {
      const auto due = pending_.extract(waiting.identifier);
      order(Show{.notification = std::move(waiting)});
    });
    order(Take{.done = std::move(done)});
  }

  void order(What what) {
    orders_.emplace_back(std::move(what));
    if (!std::exchange(busy_, true)) later();
  }

  std::map<std::string, Lease> pending_;
  std::map<std::string, std::vector<NotificationAction>> categories_;
  UserNotificationDelegate* delegate_ = nullptr;

 private:
  // The bus and who serves on it: what numbers belong to. Both are counted anew with each start.
  [[nodiscard]] std::string run(const std::string& owner) const { return bus_.value_or("") + " " + owner; }

  void askBus() {
    ask<std::string>(session_, toBus("GetId"), limit_,
                     lifeline_.guard([this](const auto& answer) { busIs(answer ? std::get<0>(answer->values) : ""); }));
  }
  void busIs(std::string bus) {
    bus_ = std::move(bus);
    lookAgain();
  }

  // What stood there has gone with the service that showed it. Without a bus nobody can tell.
  void noticeLoss() {
    if (!server_.isKnown() || bus_.value_or("").empty()) return;
    if (server_.owner() && shown_.areOf(run(*server_.owner()))) return;
    for (const auto& [identifier, one] : std::map(shown_.byIdentifier())) went(identifier);
  }

  void went(const std::string& identifier) {
    shown_.forget(identifier);
    const bool comesAnew = std::ranges::any_of(orders_, [&](auto& order) {
      const auto* show = std::get_if<Show>(&order.what());
      return show != nullptr && show->notification.identifier == identifier;
    });
    if (delegate_ != nullptr && !comesAnew) delegate_->didClose(identifier);
  }

  void later() {
    main_.post(lifeline_.guard([this] { start(); }));
  }

  // What comes later is of no concern to the order that was given up for it.
  template <class F>
  auto ofThisOrder(F call) {
    return lifeline_.guard([this, number = number_, call = std::move(call)](auto&&... args) mutable {
      if (number == number_) call(std::forward<decltype(args)>(args)...);
    });
  }

  void start() {
    ++number_;
    alarm_ = main_.after(limit_, [this] { giveUp(); });
    waitsForServer_ = true;
    lookAgain();
  }

  void lookAgain() {
    noticeLoss();
    if (!waitsForServer_ || !server_.isKnown() || !bus_) return;
    waitsForServer_ = false;
    std::visit([this](auto& what) { carryOut(what); }, orders_.front().what());
  }

  void next() {
    ++number_;
    waitsForServer_ = false;
    alarm_.release();
    orders_.pop_front();
    busy_ = !orders_.empty();
    if (busy_) later();
  }

  // Everything that waits would only wait as long again, one after the other.
  void giveUp() {
    auto orders = std::exchange(orders_, {});
    ++number_;
    waitsForServer_ = false;
    busy_ = false;
    for (auto& one : orders) std::visit([](auto& what) { fail(what); }, one.what());
  }

  static void fail(Show& show) {
    if (show.done) show.done(std::unexpected(notificationError(silence())));
  }
  static void fail(Take& take) { take.done({}); }
  static void fail(Remove& /*unheard*/) {}
  static void fail(Ask& ask) { ask.done(denied()); }
  static void fail(Request& request) { request.done(false); }

  void carryOut(Take& take) { answer(take.done, Status{}); }

  // The answer may order more, or end this object.
  template <class Value>
  void answer(Completion<Value>& done, Value value) {
    auto call = std::move(done);
    next();
    if (call) call(std::move(value));
  }

  void carryOut(Show& show) {
    NotificationPresentationOptions presented{.banner = true, .sound = show.notification.sound};
    if (delegate_ != nullptr && application_.isActive()) {
      presented = delegate_->willPresent(show.notification);
      presented.sound &= show.notification.sound;
    }
    if (!presented.banner) return answer(show.done, Status{});
    if (server_.owner() && server_.owner() == capableService_) return notify(presented.sound);
    ask<Identifiers>(session_, toService("GetCapabilities"), limit_,
                     ofThisOrder([this, sound = presented.sound](auto capable) {
                       if (!capable && !BusError::isRefusal(capable.error().code)) return failShow(capable.error());
                       capableService_ = capable ? std::optional(capable->sender) : std::nullopt;
                       const auto words = capable ? std::get<0>(std::move(capable->values)) : Identifiers();
                       capabilities_ = {words.begin(), words.end()};
                       notify(sound);
                     }));
  }

  void notify(bool sound) {
    const auto& notification = std::get<Show>(orders_.front().what()).notification;
    static const std::vector<NotificationAction> kNone;
    const auto category = categories_.find(notification.categoryIdentifier.value_or(""));
    auto words =
        notificationWords(notification, sound, category == categories_.end() ? kNone : category->second, capabilities_);
    if (stay_) words.hints["urgency"] = kCriticalUrgency;
    const auto replaces = server_.owner() && shown_.areOf(run(*server_.owner()))
                              ? shown_.numberOf(notification.identifier)
                              : std::uint32_t{0};
    const auto answered = [this, order = number_, replaces](const Result<BusAnswer<std::uint32_t>>& shown) {
      if (order == number_)
        return shown ? nowShown(shown->sender, std::get<0>(shown->values), replaces) : failShow(shown.error());
      if (shown) close(shown->sender, std::get<0>(shown->values));
    };
    ask<std::uint32_t>(session_, toService("Notify"), limit_ + kLateAnswers, lifeline_.guard(answered),
                       words.application, replaces, words.icon, words.summary, words.body, words.actions,
                       variants(words.hints), stay_ ? kForGood : kAsLongAsTheServiceLikes);
  }

  void nowShown(const std::string& owner, std::uint32_t number, std::uint32_t replaced) {
    auto& show = std::get<Show>(orders_.front().what());
    shown_.belongTo(run(owner));
    shown_.put(show.notification.identifier, {.number = number, .userInfo = show.notification.userInfo});
    if (replaced != 0 && replaced != number) close(owner, replaced);
    answer(show.done, Status{});
  }

  void failShow(const Error& error) {
    answer(std::get<Show>(orders_.front().what()).done, Status(std::unexpected(notificationError(error))));
  }

  void carryOut(Remove& remove) {
    const auto owner = server_.owner();
    if (owner && shown_.areOf(run(*owner))) {
      auto identifiers = std::move(remove.identifiers);
      if (!identifiers) {
        identifiers.emplace();
        for (const auto& [identifier, one] : shown_.byIdentifier()) identifiers->push_back(identifier);
      }
      for (const auto& identifier : *identifiers) {
        if (const auto number = shown_.numberOf(identifier); number != 0) close(*owner, number);
        shown_.forget(identifier);
      }
    }
    next();
  }

  void close(const std::string& owner, std::uint32_t number) {
    ask<>(
        session_, toService("CloseNotification", owner), limit_, [](const auto&) {}, number);
  }

  void carryOut(Ask& /*asked*/) {
    findService(
        [this](bool there) { answer(std::get<Ask>(orders_.front().what()).done, there ? allowed() : denied()); });
  }

  void carryOut(Request& /*requested*/) {
    findService([this](bool there) { answer(std::get<Request>(orders_.front().what()).done, Result<bool>(there)); });
  }

  template <class Done>
  void findService(Done done) {
    if (server_.owner()) return done(true);
    ask<Identifiers>(
        session_, toBus("ListActivatableNames"), limit_,
        ofThisOrder([done = std::move(done)](const auto& names) mutable {
          done(names && std::ranges::find(std::get<0>(names->values), kService) != std::get<0>(names->values).end());
        }));
  }

  void chosen(const std::string& owner, std::uint32_t number, const std::string& action) {
    const auto identifier = shown_.identifierOf(number);
    if (!identifier) return;
    NotificationResponse response{.notificationIdentifier = *identifier,
                                  .userInfo = shown_.byIdentifier().at(*identifier).userInfo};
    if (action != kDefaultAction) response.actionIdentifier = action;
    shown_.forget(*identifier);
    close(owner, number);
    if (delegate_ != nullptr) delegate_->didReceive(response, [] {});
  }

  [[nodiscard]] static NotificationSettings allowed() {
    return {.authorization = NotificationAuthorization::authorized, .badge = NotificationSetting::enabled};
  }
  [[nodiscard]] static NotificationSettings denied() {
    return {.authorization = NotificationAuthorization::denied, .badge = NotificationSetting::notSupported};
  }

  BusLink& session_;
  MainQueue& main_;
  const Clock& clock_;
  const Application& application_;
  Duration limit_;
  bool stay_;
  ShownNotifications shown_;
  std::optional<std::string> bus_;  // its identity; empty where it has none to tell
  std::optional<std::string> capableService_;
  std::set<std::string> capabilities_;
  std::deque<Order> orders_;  // the first one is being carried out while busy
  bool busy_ = false;
  bool waitsForServer_ = false;
  std::uint64_t number_ = 0;  // of the order that is being carried out
  Lease alarm_;
  BusNameWatch server_;
  Lease chosen_;
  Lease closed_;
  Lease connection_;
  Lifeline lifeline_;
};

DesktopNotifications::DesktopNotifications(const Surroundings& surroundings)
    : impl_(std::make_unique<Impl>(surroundings)) {}
DesktopNotifications::~DesktopNotifications() = default;

void DesktopNotifications::add(UserNotification notification, Completion<Status> done) {
  impl_->add(std::move(notification), std::move(done));
}
void DesktopNotifications::removePending(const std::vector<std::string>& identifiers) {
  for (const auto& identifier : identifiers) impl_->pending_.erase(identifier);
}
void DesktopNotifications::removeDelivered(const std::vector<std::string>& identifiers) {
  impl_->order(Remove{.identifiers = identifiers});
}
void DesktopNotifications::removeAllPending() { impl_->pending_.clear(); }
void DesktopNotifications::removeAllDelivered() { impl_->order(Remove{}); }
void DesktopNotifications::settings(Completion<NotificationSettings> done) {
  impl_->order(Ask{.done = std::move(done)});
}
void DesktopNotifications::requestAuthorization(NotificationOptions /*options*/, Completion<Result<bool>> done) {
  impl_->order(Request{.done = std::move(done)});
}
void DesktopNotifications::setCategories(std::vector<NotificationCategory> categories) {
  impl_->categories_.clear();
  for (auto& category : categories)
    impl_->categories_.insert_or_assign(category.identifier, std::move(category.actions));
}
void DesktopNotifications::setDelegate(UserNotificationDelegate* delegate) { impl_->delegate_ = delegate; }

}  // namespace corvane
