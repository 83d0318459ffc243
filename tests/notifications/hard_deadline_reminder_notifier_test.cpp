#include "notifications/hard_deadline_reminder_notifier.h"

#include "notifications/notifications_fixture.h"

namespace corvane {
namespace {

using Reminder = HardDeadlineReminderNotifier::Reminder;

struct ReminderTest : testing::NotificationsTest {
  void scheduleFor(Date enforcement, std::int64_t pending) {
    notifier.schedule(HardDeadlineReminderNotifier::reminders(enforcement, time().now()), enforcement, pending,
                      Calendar::utc());
    time().runUntilIdle();
  }

  HardDeadlineReminderNotifier notifier{router, world.preferences, world.log};
};

TEST_F(ReminderTest, onlyWhatIsAheadIsReminded) {
  const auto now = time().now();
  const std::pair<Duration, std::vector<std::int64_t>> cases[] = {
      {2h, {60, 30, 5}}, {1h + 1us, {60, 30, 5}}, {1h, {30, 5}}, {40min, {30, 5}}, {4min, {}}, {-1h, {}}};
  for (const auto& [ahead, minutes] : cases) {
    std::vector<Reminder> expected;
    for (const auto lead : minutes)
      expected.push_back({.minutesRemaining = lead, .fireDate = now + ahead - std::chrono::minutes(lead)});
    EXPECT_EQ(HardDeadlineReminderNotifier::reminders(now + ahead, now), expected) << ahead.count();
  }
}

TEST_F(ReminderTest, theNotifierGetsEachWithItsOwnTime) {
  const auto enforcement = time().now() + 40min;
  scheduleFor(enforcement, 3);
  const auto sent = requests();
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(sent[0].identifier, "crv.hardDeadlineReminder.30m");
  EXPECT_EQ(sent[0].title, "Updates install in 30 minutes");
  EXPECT_EQ(sent[0].body,
            "3 required updates will install automatically when the countdown ends. Open Corvane to install now.");
  EXPECT_EQ(sent[0].categoryIdentifier, "crv.updatesAvailable.category");
  EXPECT_THAT(sent[0].userInfo, ElementsAre(std::pair("intent", "showDeferralPrompt")));
  EXPECT_TRUE(sent[0].sound);
  EXPECT_EQ(sent[0].fireDate, enforcement - 30min);
  EXPECT_EQ(sent[1].identifier, "crv.hardDeadlineReminder.5m");
  EXPECT_EQ(sent[1].fireDate, enforcement - 5min);
  EXPECT_THAT(world.log.messages(),
              ElementsAre("HardDeadlineReminderNotifier: Scheduled 2 reminder(s) for hard-deadline enforcement at "
                          "2026-11-01T12:40:00+00:00."));
  scheduleFor(time().now() + 4min, 3);
  EXPECT_EQ(requests().size(), 2U);
  EXPECT_EQ(world.log.count("Scheduled 0 reminder(s)"), 1U);
}

TEST_F(ReminderTest, asBannersTheyWaitAtTheDesktopAndOneFailureIsNotAll) {
  manage({{"AppTitle", "Acme"}, {"NotificationPolicy", PlistDict{{"hardDeadlineReminder", "banner"}}}});
  service.failures["crv.hardDeadlineReminder.60m"] = Error{"CRVBus", 3, "no answer"};
  scheduleFor(time().now() + 2h, 1);
  EXPECT_THAT(service.pending(), ElementsAre("crv.hardDeadlineReminder.30m", "crv.hardDeadlineReminder.5m"));
  EXPECT_TRUE(world.log.holds("HardDeadlineReminderNotifier: Could not schedule the 60-minute reminder: no answer"));
  time().advance(90min);
  const auto* shown = service.shown("crv.hardDeadlineReminder.30m");
  ASSERT_NE(shown, nullptr);
  EXPECT_EQ(shown->notification.header, "Acme");
  EXPECT_EQ(shown->notification.body,
            "1 required update will install automatically when the countdown ends. Open Acme to install now.");
  notifier.cancelAll();
  EXPECT_THAT(service.pending(), IsEmpty());
  EXPECT_THAT(service.delivered(), IsEmpty());
  EXPECT_THAT(requests().back().identifiers, ElementsAre("crv.hardDeadlineReminder.60m", "crv.hardDeadlineReminder.30m",
                                                         "crv.hardDeadlineReminder.5m"));
}

}  // namespace
}  // namespace corvane
