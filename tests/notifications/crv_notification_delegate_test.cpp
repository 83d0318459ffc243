#include "notifications/crv_notification_delegate.h"

#include "core/records/notifications.h"
#include "notifications/notifications_fixture.h"

namespace corvane {
namespace {

struct DelegateTest : testing::NotificationsTest {
  void show(const char* identifier, std::map<std::string, std::string> userInfo) {
    service.add({.identifier = identifier, .sound = true, .userInfo = std::move(userInfo)}, [](const Status&) {});
  }

  int prompts = 0;
  Lease observer = world.notifications.observe<ShowDeferralPromptFromNotification>([this](const auto&) { ++prompts; });
};

TEST_F(DelegateTest, theCategoryBearsTheConfiguredTitle) {
  manage({{"AppTitle", "Acme"}});
  const CRVNotificationDelegate delegate(service, world.notifications, time().main(), config());
  EXPECT_THAT(service.categories, ElementsAre(NotificationCategory{
                                      .identifier = "crv.updatesAvailable.category",
                                      .actions = {{.identifier = "crv.openDeferralPrompt", .title = "Open Acme"}}}));
}

TEST_F(DelegateTest, inFrontAnyNotificationIsABannerWithSound) {
  service.inFront = true;
  const CRVNotificationDelegate delegate(service, world.notifications, time().main(), config());
  show("any", {});
  EXPECT_EQ(service.shown("any")->shown, (NotificationPresentationOptions{.banner = true, .sound = true}));
}

TEST_F(DelegateTest, aClickLeadsToThePromptOnceAndInALaterTurn) {
  const CRVNotificationDelegate delegate(service, world.notifications, time().main(), config());
  const std::map<std::string, std::string> intent = {{"intent", "showDeferralPrompt"}};
  show("banner", intent);
  show("button", intent);
  EXPECT_TRUE(service.choose("banner"));
  EXPECT_EQ(prompts, 0);
  time().runUntilIdle();
  EXPECT_EQ(prompts, 1);
  EXPECT_TRUE(service.choose("button", "crv.openDeferralPrompt"));
  time().runUntilIdle();
  EXPECT_EQ(prompts, 2);
}

TEST_F(DelegateTest, whatCarriesNoIntentOnlyCompletes) {
  {
    const CRVNotificationDelegate delegate(service, world.notifications, time().main(), config());
    const std::map<std::string, std::string> infos[] = {
        {}, {{"intent", "showSettings"}}, {{"intent", ""}}, {{"Intent", "showDeferralPrompt"}}};
    for (const auto& info : infos) {
      show("click", info);
      EXPECT_TRUE(service.choose("click", "crv.openDeferralPrompt"));
    }
  }
  show("late", {{"intent", "showDeferralPrompt"}});
  EXPECT_FALSE(service.choose("late")) << "the delegate is gone";
  time().runUntilIdle();
  EXPECT_EQ(prompts, 0);
}

}  // namespace
}  // namespace corvane
