#include "platform/dbus/desktop_notifications.h"

#include "platform/dbus/shown_notifications.h"
#include "platform/scripted/scripted_application.h"
#include "platform/scripted/scripted_user_notifications.h"
#include "platform/scripted/virtual_time.h"
#include "support/bus_test.h"
#include "support/notification_server.h"
#include "support/user_notifications_contract.h"

namespace corvane::testing {

namespace {

// Hears what the user does, and presents what it is told to.
class Ear final : public UserNotificationDelegate {
 public:
  NotificationPresentationOptions presented;
  std::vector<NotificationResponse> heard;
  std::vector<std::string> closed;

 private:
  NotificationPresentationOptions willPresent(const UserNotification&) override { return presented; }
  void didReceive(const NotificationResponse& response, Task) override { heard.push_back(response); }
  void didClose(const std::string& identifier) override { closed.push_back(identifier); }
};

struct Desktop : BusSession {
  std::unique_ptr<BusLink> link;
  ScriptedApplication application;
  TemporaryFolder runtime;

  // As a process of its own has them; those of before must be gone.
  [[nodiscard]] std::unique_ptr<DesktopNotifications> begin(Duration limit = kPatience, bool stay = false) {
    link = std::make_unique<BusLink>(loop_.loop(), loop_.mainQueue(), work_, bus_.address(), kBrisk);
    return beginOn(*link, runtime.path(), limit, stay);
  }
  std::unique_ptr<DesktopNotifications> beginOn(BusLink& session, const std::filesystem::path& folder, Duration limit,
                                                bool stay) {
    return std::make_unique<DesktopNotifications>(DesktopNotifications::Surroundings{.session = session,
                                                                                     .main = loop_.mainQueue(),
                                                                                     .clock = loop_.clock(),
                                                                                     .application = application,
                                                                                     .folder = folder,
                                                                                     .limit = limit,
                                                                                     .stay = stay});
  }
};

class DesktopWorld {
 public:
  UserNotifications& notifications() { return *notifications_; }
  [[nodiscard]] std::vector<std::string> titles() const { return server_.titles(); }
  void choose(const std::string& title, std::optional<std::string> action) {
    server_.choose(server_.numberOf(title), action.value_or("default"));
  }
  void dismiss(const std::string& title) { server_.dismiss(server_.numberOf(title)); }
  void refuse(bool refuses) { server_.refuses = refuses; }
  void inFront(bool front) { session_.application.active = front; }
  bool wait(const std::function<bool()>& done) { return session_.wait(done); }

 private:
  Desktop session_;
  NotificationServer server_{session_.bus_};
  std::unique_ptr<DesktopNotifications> notifications_ = session_.begin();
};

class ScriptedWorld {
 public:
  UserNotifications& notifications() { return notifications_; }
  [[nodiscard]] std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (const auto& identifier : notifications_.delivered())
      titles.push_back(notifications_.shown(identifier)->notification.title);
    return titles;
  }
  void choose(const std::string& title, std::optional<std::string> action) {
    EXPECT_TRUE(notifications_.choose(identifierOf(title), std::move(action)));
  }
  void dismiss(const std::string& title) { notifications_.close(identifierOf(title)); }
  void refuse(bool refuses) {
    notifications_.failure = refuses ? std::optional(Error{.domain = "CRVTest", .text = "No."}) : std::nullopt;
  }
  void inFront(bool front) { notifications_.inFront = front; }
  bool wait(const std::function<bool()>& done) {
    machine_.advance(10ms);
    return done();
  }

 private:
  [[nodiscard]] std::string identifierOf(const std::string& title) const {
    for (const auto& identifier : notifications_.delivered())
      if (notifications_.shown(identifier)->notification.title == title) return identifier;
    return "";
  }

  VirtualMachine machine_;
  ScriptedUserNotifications notifications_{machine_.main()};
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Desktop, UserNotificationsContract, DesktopWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, UserNotificationsContract, ScriptedWorld);

struct DesktopNotificationsTest : SessionTest<Desktop> {
  std::optional<Error> add(DesktopNotifications& notifications, UserNotification notification) {
    std::optional<Status> status;
    notifications.add(std::move(notification), [&](Status given) { status = std::move(given); });
    EXPECT_TRUE(wait([&] { return status.has_value(); }));
    return !status || *status ? std::nullopt : std::optional(status->error());
  }
  NotificationSettings settings(DesktopNotifications& notifications) {
    std::optional<NotificationSettings> settings;
    notifications.settings([&](NotificationSettings given) { settings = given; });
    EXPECT_TRUE(wait([&] { return settings.has_value(); }));
    return settings.value_or(NotificationSettings{});
  }
  bool shows(const NotificationServer& server, const std::vector<std::string>& titles) {
    return wait([&] { return server.titles() == titles; });
  }
  static UserNotification note(const std::string& identifier) {
    return {.identifier = identifier, .title = identifier};
  }
};

TEST_F(DesktopNotificationsTest, EverythingIsSaidInTheServicesWords) {
  const NotificationServer server(bus_);
  const auto notifications = begin();
  notifications->setCategories(
      {{.identifier = "updates", .actions = {{.identifier = "open", .title = "Open Corvane"}}}});
  EXPECT_FALSE(add(*notifications, {.identifier = "a",
                                    .title = "5 < 6 & more",
                                    .body = "<b>Tom & Jerry</b>",
                                    .header = "House Updates",
                                    .sound = true,
                                    .categoryIdentifier = "updates"}));
  EXPECT_FALSE(add(*notifications, {.identifier = "b", .title = std::string("torn \xff and \0 zero", 17)}));
  EXPECT_FALSE(add(*notifications, {.identifier = "c", .title = "", .categoryIdentifier = "unknown"}));
  const auto shown = server.shown();
  ASSERT_EQ(shown.size(), 3U);
  EXPECT_EQ(shown[0].application, "House Updates");
  EXPECT_EQ(shown[0].summary, "5 < 6 & more") << "a summary is no markup";
  EXPECT_EQ(shown[0].body, "&lt;b&gt;Tom &amp; Jerry&lt;/b&gt;");
  EXPECT_THAT(shown[0].actions, ElementsAre("default", "Open Corvane", "open", "Open Corvane"));
  EXPECT_EQ(shown[0].hint("category"), "updates");
  EXPECT_EQ(shown[0].hint("desktop-entry"), "org.corvane.Corvane");
  EXPECT_EQ(shown[0].hint("sound-name"), "message-new-instant");
  EXPECT_EQ(shown[0].hints.at("urgency").get<std::uint8_t>(), 1);
  EXPECT_FALSE(shown[0].isQuiet());
  EXPECT_EQ(shown[0].timeout, -1);
  EXPECT_EQ(shown[1].application, "Corvane");
  EXPECT_EQ(shown[1].summary, "torn \xEF\xBF\xBD and  zero");
  EXPECT_TRUE(shown[1].isQuiet());
  EXPECT_EQ(shown[1].hint("category"), "");
  EXPECT_EQ(shown[2].summary, "Corvane");
  EXPECT_THAT(shown[2].actions, ElementsAre("default", "Corvane"));
}

TEST_F(DesktopNotificationsTest, AServiceThatCanDoLittleIsAskedForLittle) {
  const NotificationServer plain(bus_, {});
  const auto notifications = begin();
  EXPECT_FALSE(add(*notifications, {.identifier = "a", .title = "Title", .body = "a < b", .sound = true}));
  const auto shown = plain.shown();
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].summary, "Title: a < b");
  EXPECT_EQ(shown[0].body, "");
  EXPECT_THAT(shown[0].actions, IsEmpty());
  EXPECT_EQ(shown[0].hint("sound-name"), "");
}

TEST_F(DesktopNotificationsTest, TheSoundThatTheDelegateForbidsIsSuppressed) {
  Ear quiet;
  quiet.presented = {.banner = true};
  const NotificationServer server(bus_);
  const auto notifications = begin();
  notifications->setDelegate(&quiet);
  application.active = true;
  EXPECT_FALSE(add(*notifications, {.identifier = "a", .title = "A", .sound = true}));
  ASSERT_EQ(server.shown().size(), 1U);
  EXPECT_TRUE(server.shown()[0].isQuiet());
}

TEST_F(DesktopNotificationsTest, WhatAnEarlierProcessShowedIsItsSuccessors) {
  NotificationServer server(bus_);
  {
    const auto earlier = begin();
    for (const auto* identifier : {"old", "older", "oldest", "chosen", "dismissed"}) {
      auto given = note(identifier);
      given.userInfo = {{"intent", "showDeferralPrompt"}};
      EXPECT_FALSE(add(*earlier, given));
    }
    server.dismiss(server.numberOf("dismissed"));
    ASSERT_TRUE(wait([&] {
      const ShownNotifications file(runtime.path() / "corvane-notifications.json");
      return file.byIdentifier().size() == 4;
    }));
  }
  Ear ear;
  const auto later = begin();
  later->setDelegate(&ear);
  EXPECT_FALSE(add(*later, note("old"))) << "in the place of the one that is there";
  EXPECT_TRUE(shows(server, {"older", "oldest", "chosen", "old"}));
  later->removeDelivered({"older"});
  EXPECT_TRUE(shows(server, {"oldest", "chosen", "old"}));
  server.choose(server.numberOf("chosen"), "default");
  ASSERT_TRUE(wait([&] { return ear.heard.size() == 1; }));
  EXPECT_EQ(ear.heard[0].userInfo.at("intent"), "showDeferralPrompt");
  later->removeAllDelivered();
  EXPECT_TRUE(shows(server, {}));
}

TEST_F(DesktopNotificationsTest, NumbersOfAServiceThatRanBeforeMeanNothing) {
  auto notifications = begin();
  {
    const NotificationServer first(bus_);
    EXPECT_FALSE(add(*notifications, note("a")));
    EXPECT_FALSE(add(*notifications, note("b")));
  }
  auto second = std::make_unique<NotificationServer>(bus_);
  const auto foreign = [&] {
    const auto speaker = sdbus::createSessionBusConnectionWithAddress(bus_.address());
    const auto proxy = sdbus::createProxy(*speaker, NotificationServer::kName, "/org/freedesktop/Notifications");
    std::uint32_t number = 0;
    proxy->callMethod("Notify")
        .onInterface(NotificationServer::kName)
        .withArguments(std::string("Mail"), std::uint32_t{0}, std::string(), std::string("foreign"), std::string(),
                       std::vector<std::string>(), std::map<std::string, sdbus::Variant>(), std::int32_t{-1})
        .storeResultsTo(number);
    EXPECT_EQ(number, 1U);
  };
  foreign();
  notifications->removeDelivered({"a"});
  EXPECT_FALSE(add(*notifications, note("b")));
  EXPECT_TRUE(shows(*second, {"foreign", "b"}));

  // Restarted with its bus, beside a process that comes after, so that even its address may be the same.
  notifications.reset();
  second.reset();
  bus_.end();
  bus_.start();
  second = std::make_unique<NotificationServer>(bus_);
  foreign();
  notifications = begin();
  notifications->removeAllDelivered();
  settings(*notifications);
  EXPECT_TRUE(shows(*second, {"foreign"}));
}

TEST_F(DesktopNotificationsTest, WhatGoesWithItsServiceIsToldUnlessItComesAnew) {
  Ear ear;
  auto server = std::make_unique<NotificationServer>(bus_);
  const auto notifications = begin();
  notifications->setDelegate(&ear);
  EXPECT_FALSE(add(*notifications, note("a")));
  EXPECT_FALSE(add(*notifications, note("b")));
  server.reset();
  EXPECT_TRUE(wait([&] { return ear.closed == std::vector<std::string>{"a", "b"}; }));

  server = std::make_unique<NotificationServer>(bus_);
  EXPECT_FALSE(add(*notifications, note("c")));
  server.reset();
  server = std::make_unique<NotificationServer>(bus_, std::vector<std::string>{"body"}, 100);
  EXPECT_FALSE(add(*notifications, note("c")));
  EXPECT_TRUE(shows(*server, {"c"}));
  EXPECT_THAT(ear.closed, ElementsAre("a", "b"));
}

TEST_F(DesktopNotificationsTest, WhatStaysIsCriticalAndHasNoEnd) {
  const NotificationServer server(bus_);
  const auto notifications = begin(kPatience, true);
  EXPECT_FALSE(add(*notifications, note("a")));
  ASSERT_EQ(server.shown().size(), 1U);
  EXPECT_EQ(server.shown()[0].hints.at("urgency").get<std::uint8_t>(), 2);
  EXPECT_EQ(server.shown()[0].timeout, 0);
}

TEST_F(DesktopNotificationsTest, AServiceThatNumbersAnewLeavesNothingBehind) {
  NotificationServer server(bus_);
  server.numbersAnew = true;
  const auto notifications = begin();
  EXPECT_FALSE(add(*notifications, {.identifier = "a", .title = "One"}));
  EXPECT_FALSE(add(*notifications, {.identifier = "a", .title = "Two"}));
  EXPECT_TRUE(shows(server, {"Two"}));
  server.refuses = true;
  EXPECT_THAT(add(*notifications, note("b"))->text, HasSubstr("refused: no room on the screen"));
}

TEST_F(DesktopNotificationsTest, WithoutAServiceTheErrorSaysWhatIsMissing) {
  const auto notifications = begin();
  const auto error = add(*notifications, note("a"));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain, DesktopNotificationError::domain);
  EXPECT_EQ(error->code, BusError::noService);
  EXPECT_EQ(error->text, "No notification service runs in this desktop session.");
  EXPECT_EQ(settings(*notifications).authorization, NotificationAuthorization::denied);

  bus_.makeStartable(NotificationServer::kName, "/bin/false");
  bus_.end();
  bus_.start();
  EXPECT_TRUE(wait([&] { return settings(*notifications).authorization == NotificationAuthorization::authorized; }));

  BusLink none(loop_.loop(), loop_.mainQueue(), work_, std::nullopt);
  const auto lonely = beginOn(none, runtime.path() / "not there", kPatience, false);
  EXPECT_EQ(add(*lonely, note("a"))->text, "There is no desktop session to show notifications in.");
  lonely->removeAllDelivered();
  EXPECT_EQ(settings(*lonely).badge, NotificationSetting::notSupported);
}

TEST_F(DesktopNotificationsTest, AServiceThatHangsFailsAllThatWaitAndTakesBackWhatCameLate) {
  NotificationServer server(bus_);
  EXPECT_FALSE(add(*begin(), note("before")));
  const auto notifications = begin(50ms);
  server.holdBack(true);
  std::vector<int> codes;
  for (const auto* identifier : {"a", "b", "c"})
    notifications->add(note(identifier), [&](const Status& given) { codes.push_back(given ? 0 : given.error().code); });
  notifications->removeDelivered({"before"});
  std::optional<NotificationSettings> settings;
  notifications->settings([&](auto given) { settings = given; });
  ASSERT_TRUE(wait([&] { return codes.size() == 3 && settings; }));
  EXPECT_THAT(codes, ElementsAre(BusError::noAnswer, BusError::noAnswer, BusError::noAnswer));
  server.holdBack(false);
  EXPECT_TRUE(shows(server, {"before"})) << "the one that came late is gone again";
}

TEST_F(DesktopNotificationsTest, AMemoryThatCannotBeReadIsNoMemory) {
  const NotificationServer server(bus_);
  for (const auto* torn : {"", R"({"version":2,"service":"x","shown":{}})",
                           R"({"version":1,"service":"x","shown":{"a":{"number":-1},"b":7,"c":{"number":9999999999}}})",
                           R"({"version":1,"service":"x","shown":{"a":{"number":3,"userInfo":{"k":4}}}})"}) {
    const auto file = runtime.write("corvane-notifications.json", torn);
    const auto notifications = begin();
    notifications->removeAllDelivered();
    EXPECT_FALSE(add(*notifications, note("a"))) << torn;
    EXPECT_EQ(ShownNotifications(file).byIdentifier().size(), 1U) << torn;
  }
}

TEST_F(DesktopNotificationsTest, NobodyIsAnsweredAfterItsEnd) {
  const NotificationServer server(bus_);
  int answers = 0;
  for (int turns = 0; turns < 10; ++turns) {
    auto notifications = begin();
    notifications->add(note("a"), [&](const Status&) { ++answers; });
    auto later = note("b");
    later.delay = 1h;
    notifications->add(later, [&](const Status&) { ++answers; });
    notifications->settings([&](auto) { ++answers; });
    for (int i = 0; i < turns; ++i) loop_.look();
    notifications.reset();
    const int before = answers;
    loop_.look();
    EXPECT_EQ(answers, before) << turns;
  }
}

}  // namespace corvane::testing
