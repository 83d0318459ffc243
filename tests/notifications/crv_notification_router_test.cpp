#include "notifications/crv_notification_router.h"

#include "notifications/notifications_fixture.h"

namespace corvane {
namespace {

using Request = PersistentNotificationRequest;
using Operation = PersistentNotificationRequest::Operation;

struct RouterTest : testing::NotificationsTest {
  void post(NotificationContent content) {
    router.post(content, config(), [this](Status status) { outcome = std::move(status); });
    time().runUntilIdle();
  }
  [[nodiscard]] NotificationContent reminder(std::optional<Date> fireDate = std::nullopt) const {
    return {.type = CRVNotificationType::hardDeadlineReminder,
            .identifier = "crv.hardDeadlineReminder.5m",
            .title = "Updates install in 5 minutes",
            .body = "Open Corvane to install now.",
            .sound = true,
            .showsDeferralPrompt = true,
            .fireDate = fireDate};
  }
  std::optional<Duration> resumedAfter(Operation operation) {
    std::optional<Date> resumed;
    const auto start = time().now();
    const auto resume = [&] { resumed = time().now(); };
    if (operation == Operation::clearAll)
      router.clearAll(resume);
    else
      router.clearDelivered(resume);
    EXPECT_FALSE(resumed) << "never within the call";
    time().advance(30s);
    return resumed ? std::optional(*resumed - start) : std::nullopt;
  }

  std::optional<Status> outcome;
};

TEST_F(RouterTest, aPersistentTypeGoesToTheNotifierAsItIs) {
  manage({{"AppTitle", "Acme Updates"}});
  const auto past = time().now() - 1h;
  post(reminder(past));
  EXPECT_THAT(requests(), ElementsAre(Request{.operation = Operation::post,
                                              .identifier = "crv.hardDeadlineReminder.5m",
                                              .title = "Updates install in 5 minutes",
                                              .body = "Open Acme Updates to install now.",
                                              .sound = true,
                                              .categoryIdentifier = "crv.updatesAvailable.category",
                                              .userInfo = {{"intent", "showDeferralPrompt"}},
                                              .fireDate = past,
                                              .displayHeader = "Acme Updates",
                                              .openActionTitle = "Open Acme Updates"}));
  const auto& start = children.started().front();
  EXPECT_EQ(start.executable, (folder.path() / kNotifier).string());
  EXPECT_EQ(start.environment, (decltype(start.environment){{"HOME", "/home/ada"}, {"DISPLAY", ":0"}}));
  EXPECT_TRUE(start.detached);
  EXPECT_TRUE(outcome && *outcome);
  EXPECT_THAT(service.added, IsEmpty());
  EXPECT_THAT(world.log.messages(), IsEmpty());
}

TEST_F(RouterTest, anyOtherTypeGoesToTheDesktop) {
  manage({{"AppTitle", "Acme Updates"}});
  post({.type = CRVNotificationType::updatesAvailable,
        .identifier = "crv.updatesAvailable",
        .title = "Corvane: 1 open app needs updating",
        .body = "Quit the app or open Corvane to update now."});
  EXPECT_THAT(service.added, ElementsAre(UserNotification{.identifier = "crv.updatesAvailable",
                                                          .title = "Acme Updates: 1 open app needs updating",
                                                          .body = "Quit the app or open Acme Updates to update now.",
                                                          .header = "Acme Updates"}));
  EXPECT_THAT(children.started(), IsEmpty());
  EXPECT_TRUE(outcome && *outcome);

  service.failure = Error{"CRVBus", 4, "notifications are switched off"};
  post({.identifier = "crv.updatesAvailable"});
  EXPECT_EQ(outcome->error().text, "notifications are switched off");
  EXPECT_THAT(world.log.messages(), IsEmpty()) << "whoever raised it tells";
}

TEST_F(RouterTest, theDesktopsTimerTakesASecondAtLeastAndNoPast) {
  manage({{"NotificationPolicy", PlistDict{{"hardDeadlineReminder", "banner"}}}});
  const std::pair<Duration, std::optional<Duration>> cases[] = {
      {-1h, std::nullopt}, {0s, std::nullopt}, {1us, 1s}, {200ms, 1s}, {1s, 1s}, {90min, 90min}};
  for (const auto& [ahead, delay] : cases) {
    service.added.clear();
    outcome.reset();
    post(reminder(time().now() + ahead));
    ASSERT_EQ(service.added.size(), delay ? 1U : 0U) << ahead.count();
    EXPECT_EQ(outcome.has_value(), delay.has_value()) << "one that is dropped is not told of";
    if (delay) {
      EXPECT_EQ(service.added.front().delay, delay);
    }
  }
  EXPECT_EQ(service.added.front().categoryIdentifier, "crv.updatesAvailable.category");
  EXPECT_THAT(service.added.front().userInfo, ElementsAre(std::pair("intent", "showDeferralPrompt")));
}

TEST_F(RouterTest, aNotifierThatCannotBeLaunchedIsToldOnceAndHasNoSubstitute) {
  const auto path = (folder.path() / kNotifier).string();
  const auto expect = [&](const std::string& text) {
    outcome.reset();
    world.log.clear();
    post(reminder());
    ASSERT_TRUE(outcome && !*outcome) << text;
    EXPECT_EQ(outcome->error().text, text);
    EXPECT_THAT(world.log.lines(),
                ElementsAre(RecordingLog::Line{
                    LogLevel::error, "CRVNotificationRouter: Could not launch persistent notifier: " + text}));
    EXPECT_THAT(service.added, IsEmpty());
  };
  script.exit = failure("CRVChildProcess", 8, "starting it: exec format error");
  expect("starting it: exec format error");
  installNotifier(std::filesystem::perms::owner_read);
  expect("Persistent notifier is missing at " + path);
  EXPECT_EQ(outcome->error().domain, "CRVNotificationRouter");
  EXPECT_EQ(outcome->error().code, 1);
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  expect("Persistent notifier is missing at " + path);
  EXPECT_EQ(resumedAfter(Operation::clearAll), Duration::zero());
  EXPECT_EQ(children.started().size(), 1U);
}

TEST_F(RouterTest, aLaunchIsToldWhileTheNotifierStillRuns) {
  script.takes = 1h;
  post(reminder());
  EXPECT_TRUE(outcome && *outcome);
  EXPECT_EQ(children.running(), 1U);
  time().advance(2h);
  EXPECT_THAT(world.log.messages(), IsEmpty()) << "and is left alone";
}

TEST_F(RouterTest, cancelAndClearGoBothWays) {
  manage({{"NotificationPolicy", PlistDict{{"hardDeadlineReminder", "banner"}}}});
  post(reminder(time().now() + 5min));
  post({.identifier = "shown"});
  router.cancel(CRVNotificationType::acPowerRequired, {"shown", "never posted"});
  EXPECT_THAT(service.delivered(), IsEmpty());
  EXPECT_THAT(service.pending(), ElementsAre("crv.hardDeadlineReminder.5m"));
  router.cancel(CRVNotificationType::acPowerRequired, {});
  post({.identifier = "shown"});
  router.clearDelivered();
  EXPECT_THAT(service.delivered(), IsEmpty());
  EXPECT_THAT(service.pending(), ElementsAre("crv.hardDeadlineReminder.5m"));
  post({.identifier = "shown"});
  EXPECT_EQ(resumedAfter(Operation::clearDelivered), Duration::zero());
  EXPECT_THAT(service.delivered(), IsEmpty());
  EXPECT_THAT(service.pending(), ElementsAre("crv.hardDeadlineReminder.5m"));
  EXPECT_EQ(resumedAfter(Operation::clearAll), Duration::zero());
  EXPECT_THAT(service.pending(), IsEmpty());
  EXPECT_THAT(requests(),
              ElementsAre(Request{.operation = Operation::cancel, .identifiers = {"shown", "never posted"}},
                          Request{.operation = Operation::cancel}, Request{.operation = Operation::clearDelivered},
                          Request{.operation = Operation::clearDelivered}, Request{.operation = Operation::clearAll}));
}

TEST_F(RouterTest, aNotifierThatIsWaitedForHasTenSecondsAndOneMore) {
  constexpr auto kStopping = "CRVNotificationRouter: Persistent notifier did not exit; stopping it.";
  script.takes = 9s;
  EXPECT_EQ(resumedAfter(Operation::clearAll), 9s);
  EXPECT_THAT(world.log.messages(), IsEmpty());
  script.takes = 1h;
  EXPECT_EQ(resumedAfter(Operation::clearDelivered), 10s);
  EXPECT_THAT(world.log.lines(), ElementsAre(RecordingLog::Line{LogLevel::error, kStopping}));
  script.heedsTerminate = false;
  EXPECT_EQ(resumedAfter(Operation::clearAll), 11s);
  EXPECT_EQ(children.running(), 0U);
}

}  // namespace
}  // namespace corvane
