#include "background/deferral_notifications.h"

#include "notifications/notifications_fixture.h"
#include "platform/scripted/scripted_application.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_locale.h"

namespace corvane {
namespace {

struct DeferralNotificationsTest : testing::NotificationsTest {
  ScriptedApplication application;
  ScriptedLocale locale;
  ScriptedEntropy entropy;
  DeferralNotifications notices{
      {router, world.preferences, application, world.machine.clock(), locale, entropy, world.log}};
};

TEST_F(DeferralNotificationsTest, anEndedDeferralIsToldAnewEachTime) {
  manage({{"AppTitle", "Acme"}});
  const std::pair<std::int64_t, const char*> cases[] = {
      {0, "Open Acme to install now or defer again."},
      {1, "1 update is waiting. Open Acme to install now or defer again."},
      {7, "7 updates are waiting. Open Acme to install now or defer again."}};
  for (const auto& [pending, body] : cases) {
    notices.notifyDeferralEnded(pending);
    const auto& told = service.added.back();
    EXPECT_EQ(told.body, body);
    EXPECT_EQ(told.title, "Your deferral has ended");
    EXPECT_THAT(told.identifier, StartsWith("deferral-resuming-"));
    EXPECT_EQ(told.categoryIdentifier, "crv.updatesAvailable.category");
    EXPECT_TRUE(told.sound);
  }
  EXPECT_EQ(service.delivered().size(), 3U) << "none takes another's place";

  service.failure = Error{"CRVBus", 1, "there is no bus"};
  notices.notifyDeferralEnded(1);
  time().runUntilIdle();
  EXPECT_TRUE(world.log.holds("DeferralWatcher: Failed to deliver resuming notification: there is no bus"));
}

TEST_F(DeferralNotificationsTest, whoeverWantsToKnowHearsWhenTheyAreGone) {
  script.takes = 2s;
  notices.notifyDeferralEnded(1);
  bool gone = false;
  notices.dismissUpdateNotifications([&] { gone = true; });
  EXPECT_THAT(service.delivered(), IsEmpty());
  time().advance(1s);
  EXPECT_FALSE(gone);
  notices.dismissUpdateNotifications({});
  time().advance(1s);
  EXPECT_TRUE(gone);
  ASSERT_EQ(children.started().size(), 2U);
  EXPECT_FALSE(children.started().front().detached);
  EXPECT_TRUE(children.started().back().detached);
}

TEST_F(DeferralNotificationsTest, remindersAreThoseOfTheMoment) {
  notices.scheduleReminders(time().now() + 40min, 2);
  ASSERT_EQ(requests().size(), 2U);
  EXPECT_EQ(requests().front().fireDate, time().now() + 10min);
  notices.cancelReminders();
  EXPECT_EQ(requests().back().identifiers.size(), 3U);
}

}  // namespace
}  // namespace corvane
