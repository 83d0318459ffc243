#include "notifier/notifier.h"

#include "platform/scripted/scripted_user_notifications.h"
#include "platform/scripted/virtual_time.h"
#include "support/test.h"

namespace corvane {
namespace {

using Request = PersistentNotificationRequest;
using Operation = Request::Operation;

struct NotifierTest : ::testing::Test {
  void handle(const Request& request) {
    EXPECT_TRUE(notifier.handle(request));
    time.runUntilIdle();
  }
  [[nodiscard]] static Request named(const char* identifier, std::optional<Date> fireDate = std::nullopt) {
    return {.identifier = identifier,
            .title = "Updates install in 30 minutes",
            .userInfo = {{"intent", "showDeferralPrompt"}},
            .fireDate = fireDate,
            .openActionTitle = "Open Corvane"};
  }

  VirtualMachine time;
  ScriptedUserNotifications service{time.main()};
  std::vector<Notifier::UserInfo> chosen;
  std::vector<std::string> failures;
  bool ended = false;
  Notifier notifier{{.service = service, .main = time.main(), .clock = time.clock()},
                    {.chosen = [this](const auto& info) { chosen.push_back(info); },
                     .failed = [this](const Error& error) { failures.push_back(error.text); },
                     .nothingLeft = [this] { ended = true; }}};
};

TEST_F(NotifierTest, showsAllThatTheRequestTells) {
  handle({.identifier = "a",
          .title = "Title",
          .body = "Body",
          .sound = true,
          .categoryIdentifier = "crv.updatesAvailable.category",
          .userInfo = {{"intent", "showDeferralPrompt"}},
          .displayHeader = "Acme",
          .openActionTitle = "Open Acme"});
  handle({.identifier = "b", .body = "Body", .openActionTitle = "Show Acme"});
  handle({.identifier = "c", .title = "No button"});
  EXPECT_EQ(service.added.front(), (UserNotification{.identifier = "a",
                                                     .title = "Title",
                                                     .body = "Body",
                                                     .header = "Acme",
                                                     .sound = true,
                                                     .categoryIdentifier = "crv.updatesAvailable.category",
                                                     .userInfo = {{"intent", "showDeferralPrompt"}}}));
  std::map<std::string, std::string> titles;
  for (const auto& category : service.categories) {
    ASSERT_EQ(category.actions.size(), 1U);
    titles[category.identifier] = category.actions.front().title;
  }
  EXPECT_EQ(titles["crv.updatesAvailable.category"], "Open Acme");
  EXPECT_EQ(titles[service.added[1].categoryIdentifier.value()], "Show Acme");
  EXPECT_EQ(service.added[2].categoryIdentifier, std::nullopt);
  EXPECT_FALSE(ended);
}

TEST_F(NotifierTest, aFireDateIsKeptByWallTime) {
  handle(named("later", time.now() + 30min));
  handle(named("sooner", time.now() + 20min));
  handle(named("late", time.now() - 1h));
  EXPECT_THAT(service.delivered(), ElementsAre("late"));
  time.suspend(25min);
  time.runUntilIdle();
  EXPECT_THAT(service.delivered(), ElementsAre("late", "sooner"));
  time.advance(5min);
  EXPECT_THAT(service.delivered(), ElementsAre("late", "later", "sooner"));
}

TEST_F(NotifierTest, oneUnderTheSameIdentifierIsReplacedWhileItWaitsToo) {
  handle(named("a", time.now() + 10min));
  handle(named("a", time.now() + 20min));
  time.advance(15min);
  EXPECT_THAT(service.added, IsEmpty());
  handle(named("a"));
  time.advance(1h);
  EXPECT_EQ(service.added.size(), 1U);
}

TEST_F(NotifierTest, removesWhatItIsToldToAndEndsWithTheLast) {
  handle(named("shown"));
  handle(named("other"));
  handle(named("waiting", time.now() + 1h));
  handle({.operation = Operation::cancel, .identifiers = {"shown", "never"}});
  EXPECT_THAT(service.delivered(), ElementsAre("other"));
  handle({.operation = Operation::clearDelivered});
  EXPECT_THAT(service.delivered(), IsEmpty());
  EXPECT_FALSE(ended) << "one still waits";
  handle({.operation = Operation::cancel, .identifiers = {"waiting"}});
  EXPECT_TRUE(ended);

  ended = false;
  handle(named("shown"));
  handle(named("waiting", time.now() + 1h));
  handle({.operation = Operation::clearAll});
  EXPECT_TRUE(ended);
  time.advance(2h);
  EXPECT_THAT(service.delivered(), IsEmpty());
}

TEST_F(NotifierTest, aClickOpensTheApplicationOnceAndTakesTheNotificationAway) {
  handle(named("body"));
  handle(named("button"));
  EXPECT_TRUE(service.choose("body"));
  EXPECT_THAT(chosen, IsEmpty()) << "not within the desktop's call";
  time.runUntilIdle();
  EXPECT_THAT(chosen, ElementsAre(Notifier::UserInfo{{"intent", "showDeferralPrompt"}}));
  EXPECT_FALSE(ended);
  EXPECT_TRUE(service.choose("button", "crv.openDeferralPrompt"));
  time.runUntilIdle();
  EXPECT_EQ(chosen.size(), 2U);
  EXPECT_TRUE(ended);
}

TEST_F(NotifierTest, oneThatTheDesktopRefusesIsToldAndNotWaitedFor) {
  handle(named("good"));
  service.failures["bad"] = Error{"CRVBus", 2, "there is no notification service"};
  handle(named("bad"));
  EXPECT_THAT(failures, ElementsAre("there is no notification service"));
  EXPECT_FALSE(ended);
  service.close("good");
  time.runUntilIdle();
  EXPECT_TRUE(ended && chosen.empty()) << "whoever closes the last opens nothing";
}

TEST_F(NotifierTest, aRefusalThatComesLateDoesNotForgetTheOneInItsPlace) {
  service.takes = 1s;
  service.failures["a"] = Error{"CRVBus", 3, "no answer"};
  handle(named("a"));
  service.failures.clear();
  handle(named("a"));
  time.advance(1h);
  EXPECT_EQ(failures.size(), 1U);
  EXPECT_FALSE(ended);
  EXPECT_FALSE(notifier.hasNothingLeft());
}

TEST_F(NotifierTest, whatCannotBeShownIsRefusedAndNothingIsAsked) {
  for (const auto& request : {Request{.title = "No identifier"}, Request{.identifier = "", .title = "Nor here"},
                              Request{.identifier = "says nothing"}, Request{.identifier = "a", .body = ""}})
    EXPECT_FALSE(notifier.handle(request));
  EXPECT_THAT(service.added, IsEmpty());
}

}  // namespace
}  // namespace corvane
