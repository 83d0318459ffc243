#include "notifications/updates_available_notifier.h"

#include "notifications/notifications_fixture.h"
#include "platform/scripted/scripted_application.h"
#include "platform/scripted/scripted_locale.h"

namespace corvane {
namespace {

struct UpdatesAvailableTest : testing::NotificationsTest {
  void notify(std::int64_t open, std::int64_t total, bool waitForACPower = false) {
    notifier.notify({.open = open, .total = total, .closedAppsWaitForACPower = waitForACPower});
    time().runUntilIdle();
  }
  std::vector<std::string> shown() {
    std::vector<std::string> titles;
    for (auto& one : std::exchange(service.added, {})) titles.push_back(std::move(one.title));
    return titles;
  }

  ScriptedApplication application;
  ScriptedLocale locale;
  UpdatesAvailableNotifier notifier{{router, world.preferences, application, world.machine.clock(), locale, world.log}};
};

TEST_F(UpdatesAvailableTest, theToastTellsOpenAndClosedApps) {
  constexpr auto kOne = "Corvane: 1 open app needs updating";
  constexpr auto kTwo = "Corvane: 2 open apps need updating";
  const std::tuple<std::int64_t, std::int64_t, bool, const char*, const char*> cases[] = {
      {1, 1, false, kOne, "Quit the app or open Corvane to update now."},
      {1, 0, true, kOne, "Quit the app or open Corvane to update now."},
      {2, 2, true, kTwo, "Quit the apps or open Corvane to update now."},
      {1, 2, false, kOne, "1 closed app also needs updating. Open Corvane to update now."},
      {2, 5, false, kTwo, "3 closed apps also need updating. Open Corvane to update now."},
      {1, 2, true, kOne,
       "1 closed app is being updated in the background. Quit the open app or open Corvane to update now."},
      {1, 4, true, kOne,
       "3 closed apps are being updated in the background. Quit the open app or open Corvane to update now."},
      {2, 3, true, kTwo,
       "1 closed app is being updated in the background. Quit the open apps or open Corvane to update now."},
      {2, 5, true, kTwo,
       "3 closed apps are being updated in the background. Quit the open apps or open Corvane to update now."},
  };
  for (const auto& [open, total, elsewhere, title, body] : cases) {
    notifier.notifyDialogTimeoutDeferred(open, total, elsewhere);
    EXPECT_EQ(service.added.back(), (UserNotification{.identifier = "crv.updatesAvailable",
                                                      .title = title,
                                                      .body = body,
                                                      .header = "Corvane",
                                                      .sound = true,
                                                      .categoryIdentifier = "crv.updatesAvailable.category",
                                                      .userInfo = {{"intent", "showDeferralPrompt"}}}));
  }
}

TEST_F(UpdatesAvailableTest, theUserHearsOfARiseNotOfARepeat) {
  for (const auto open : {3, 2, 3}) notify(open, 3);
  EXPECT_THAT(shown(), ElementsAre("Corvane: 3 open apps need updating"));
  EXPECT_THAT(children.started(), IsEmpty());
  notify(0, 3);
  EXPECT_THAT(service.delivered(), IsEmpty());
  EXPECT_THAT(requests().back().identifiers, ElementsAre("crv.updatesAvailable"));
  notify(0, 3);
  EXPECT_EQ(requests().size(), 1U) << "taken away once";
  notify(1, 3);
  EXPECT_THAT(shown(), ElementsAre("Corvane: 1 open app needs updating"));
}

TEST_F(UpdatesAvailableTest, aRiseThatIsNotShownIsRememberedAllTheSame) {
  application.active = true;
  notify(2, 2);
  application.active = false;
  notify(2, 2);
  EXPECT_THAT(shown(), IsEmpty());
  world.preferences.writePreference("UpdatesAvailableNotificationsEnabled", false);
  notify(3, 3);
  world.preferences.writePreference("UpdatesAvailableNotificationsEnabled", true);
  notify(3, 3);
  EXPECT_THAT(shown(), IsEmpty());
  notify(4, 4);
  EXPECT_EQ(shown().size(), 1U);
}

TEST_F(UpdatesAvailableTest, closedAppsThatWaitForThePowerAdapterAreToldWithEachChange) {
  for (const auto closed : {2, 2, 3, 1}) notify(0, closed, true);
  EXPECT_EQ(service.added.back().body, "Connect this Mac to AC power to continue. 1 closed app update is pending.");
  EXPECT_EQ(service.added.front().body, "Connect this Mac to AC power to continue. 2 closed app updates are pending.");
  EXPECT_THAT(service.added.back().userInfo, IsEmpty());
  EXPECT_EQ(service.added.back().categoryIdentifier, std::nullopt);
  EXPECT_THAT(shown(), ElementsAre("App updates are waiting", "App updates are waiting", "App updates are waiting"));
  notify(0, 0, true);
  EXPECT_THAT(service.delivered(), IsEmpty());
  EXPECT_THAT(requests().back().identifiers, ElementsAre("crv.acPowerRequired"));
  notify(0, 3, false);
  EXPECT_THAT(shown(), IsEmpty());
  notify(2, 1, true);
  EXPECT_THAT(shown(), ElementsAre("Corvane: 2 open apps need updating")) << "fewer in all than open is no closed app";
}

TEST_F(UpdatesAvailableTest, aCompleteCycleNagsAboutNothingAndKeepsTheCounts) {
  notify(1, 3, true);
  shown();
  const auto now = time().now();
  world.preferences.writePatchingCadenceState(
      {.currentPatchingStartDate = now - 24h, .lastPatchingCompletionDate = now - 1h, .nextCycleStartDate = now + 72h});
  notify(2, 6, true);
  notify(0, 0);
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_THAT(service.delivered(), ElementsAre("crv.acPowerRequired", "crv.updatesAvailable"));
  EXPECT_EQ(world.preferences.readLastNotifiedPendingUpdatesCount(), 1);
  EXPECT_EQ(world.preferences.readLastNotifiedACPowerRequiredCount(), 2);
}

TEST_F(UpdatesAvailableTest, aPromptThatRanOutIsToldWhateverWasToldBefore) {
  application.active = true;
  notify(2, 2);
  notifier.notifyDialogTimeoutDeferred(0, 2, false);
  EXPECT_THAT(shown(), IsEmpty());
  notifier.notifyDialogTimeoutDeferred(2, 2, false);
  EXPECT_EQ(shown().size(), 1U);
  world.preferences.writePreference("UpdatesAvailableNotificationsEnabled", false);
  notifier.notifyDialogTimeoutDeferred(2, 2, false);
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_THAT(world.log.messages(), ElementsAre("UpdatesAvailableNotifier: Dialog timeout deferred updates, but "
                                                "UpdatesAvailableNotificationsEnabled is off."));
}

TEST_F(UpdatesAvailableTest, aFailureIsOnlyLogged) {
  service.failure = Error{"CRVBus", 1, "there is no bus"};
  notify(2, 2);
  EXPECT_THAT(world.log.lines(),
              ElementsAre(RecordingLog::Line{LogLevel::warning,
                                             "UpdatesAvailableNotifier: Failed to deliver toast: there is "
                                             "no bus"}));
  EXPECT_EQ(world.preferences.readLastNotifiedPendingUpdatesCount(), 2);
}

}  // namespace
}  // namespace corvane
