#include "core/preferences/preference_manager.h"

#include <thread>

#include "core/preferences/display_title.h"
#include "support/scripted_preferences.h"
#include "support/test.h"

namespace corvane {
namespace {

struct PreferenceManagerTest : ::testing::Test, protected testing::ScriptedPreferences {
  const Date date = *parseIso8601("2026-11-22T21:04:42Z");

  bool userHas(std::string_view key) const { return domains.user().values->contains(key); }
};

TEST_F(PreferenceManagerTest, NothingStoredGivesTheDefaults) {
  const auto config = preferences.loadConfiguration();
  EXPECT_EQ(config, CorvaneConfiguration{});
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(PreferenceManagerTest, ManagedWinsOverTheUserAndTheUserOverTheDefault) {
  domains.setUser({{"DeferralTimerDefault", 90}, {"DeferralTimerFocus", 45}, {"VersionComparisonMethod", "equal_to"}});
  domains.setManaged({{"DeferralTimerDefault", 15}});
  const auto config = preferences.loadConfiguration();
  EXPECT_EQ(config->deferralTimerDefault, 15);
  EXPECT_EQ(config->deferralTimerFocus, 45);
  EXPECT_EQ(config->versionComparisonMethod, VersionComparisonMethod::equalTo);
  EXPECT_TRUE(preferences.isManaged("DeferralTimerDefault"));
  EXPECT_FALSE(preferences.isManaged("DeferralTimerFocus"));
  EXPECT_EQ(preferences.valueSource("DeferralTimerDefault"), ValueSource::managed);
  EXPECT_EQ(preferences.valueSource("DeferralTimerFocus"), ValueSource::user);
  EXPECT_EQ(preferences.valueSource("DaysUntilReset"), ValueSource::fallback);
  EXPECT_EQ(writeJson(preferences.effectiveValue("DeferralTimerDefault")), "15");
  EXPECT_EQ(writeJson(preferences.effectiveValue("VersionComparisonMethod")), "\"EQUAL_TO\"");
  EXPECT_EQ(writeJson(preferences.effectiveValue("DeferralTimerMenu")), "[60,120,240,1440]");
}

TEST_F(PreferenceManagerTest, UselessValuesFallThroughAndAreToldOnce) {
  domains.setManaged({{"DeferralTimerDefault", "60"}, {"PatchWeekStartDay", 8}, {"WebhookFeature", "loud"}});
  domains.setUser({{"DeferralTimerDefault", 90}, {"PatchWeekStartDay", 0}, {"DeadlineCountHard", -1}});
  for (int round = 0; round < 3; ++round) {
    const auto config = preferences.loadConfiguration();
    EXPECT_EQ(config->deferralTimerDefault, 90);
    EXPECT_EQ(config->patchWeekStartDay, 2);
    EXPECT_EQ(config->webhookFeature, WebhookFeature::off);
    EXPECT_EQ(config->deadlineCountHard, std::nullopt);
    domains.setUser(PlistDict(*domains.user().values));  // a new version makes it decode again
  }
  for (const auto* key : {"DeferralTimerDefault", "PatchWeekStartDay", "WebhookFeature", "DeadlineCountHard"})
    EXPECT_EQ(log.count(std::string(" ") + key + " "), 1U) << key;
}

TEST_F(PreferenceManagerTest, WhatOnlyAProfileSetsIsNotTakenFromTheUser) {
  domains.setUser({{"AppTitle", "Mine"}, {"LockSettings", true}, {"DeferralTimerMenu", PlistArray{5}}});
  EXPECT_EQ(preferences.loadConfiguration()->appTitle, "Corvane");
  EXPECT_FALSE(preferences.readPreference("LockSettings", false));
  (void)preferences.readPreference("LockSettings", false);
  EXPECT_EQ(log.count("AppTitle counts only in a profile"), 1U);
  EXPECT_EQ(log.count("LockSettings counts only in a profile"), 1U);
  domains.setManaged({{"AppTitle", "Fleet Updates"}, {"LockSettings", true}});
  EXPECT_EQ(preferences.loadConfiguration()->appTitle, "Fleet Updates");
  EXPECT_TRUE(preferences.readPreference("LockSettings", false));
}

TEST_F(PreferenceManagerTest, FormerNamesCountUntilTheNewOneIsSet) {
  domains.setUser({{"AppIgnoredLabels", PlistArray{"old"}}, {"AppSelfUpdateEnabled", true}});
  EXPECT_THAT(preferences.loadConfiguration()->ignoredLabels, ElementsAre("old"));
  EXPECT_FALSE(preferences.loadConfiguration()->selfUpdateEnabled);
  preferences.writePreference("IgnoredLabels", std::vector<std::string>{"new"});
  EXPECT_THAT(preferences.loadConfiguration()->ignoredLabels, ElementsAre("new"));
  domains.setManaged({{"AppIgnoredLabels", PlistArray{"managed"}}, {"AppSelfUpdateEnabled", true}});
  EXPECT_THAT(preferences.loadConfiguration()->ignoredLabels, ElementsAre("managed"));
  EXPECT_TRUE(preferences.loadConfiguration()->selfUpdateEnabled);
  EXPECT_TRUE(preferences.isAnyManaged(ManagedGroup::labels));
  EXPECT_TRUE(preferences.isAnyManaged(keysOf<ManagedGroup::selfUpdate>()));
  EXPECT_FALSE(preferences.isAnyManaged(ManagedGroup::webhooks));
}

TEST_F(PreferenceManagerTest, NumbersOutOfRangeAreLeftOutOfListsAndToldOnce) {
  domains.setManaged({{"DeferralTimerMenu", PlistArray{0, 44641, 44640, -5, 1}}});
  EXPECT_THAT(preferences.loadConfiguration()->deferralTimerMenu, ElementsAre(44640, 1));
  EXPECT_EQ(log.count("DeferralTimerMenu"), 1U);
  domains.setManaged({{"DeferralTimerMenu", PlistArray{0, -5}}});
  EXPECT_TRUE(preferences.loadConfiguration()->deferralTimerMenu.empty()) << "the prompt falls back to its own list";
  domains.setManaged({{"DeferralTimerMenu", PlistArray{60, "120"}}});
  EXPECT_THAT(preferences.loadConfiguration()->deferralTimerMenu, ElementsAre(60, 120, 240, 1440));
}

TEST_F(PreferenceManagerTest, ATimeThatIsNoneAndHoursThatHoldNothingAreToldOnceWithTheirValues) {
  domains.setManaged({{"BusinessHoursStartTime", "25:00"}, {"PatchingEndTime", 17}});
  domains.setUser({{"BusinessHoursStartTime", "9:00"}, {"BusinessHoursEndTime", "17:00"}});
  for (int round = 0; round < 2; ++round) {
    const auto config = preferences.loadConfiguration();
    EXPECT_EQ(config->businessHoursStartTime, "9:00") << "the next domain counts, as for every setting";
    EXPECT_EQ(config->businessHoursEndTime, "17:00");
    EXPECT_EQ(config->patchingEndTime, std::nullopt);
    domains.setUser(PlistDict(*domains.user().values));
  }
  EXPECT_EQ(log.count(R"(The managed value of BusinessHoursStartTime, "25:00", is no time of day, "HH:mm", and is)"),
            1U);
  EXPECT_EQ(log.count("The managed value of PatchingEndTime, 17, is no time of day"), 1U);
  EXPECT_EQ(log.lines().size(), 2U);
  domains.setManaged({{"BusinessHoursEndTime", "09:00"}});
  EXPECT_EQ(preferences.loadConfiguration()->businessHoursEndTime, "09:00");
  (void)preferences.loadConfiguration();
  EXPECT_EQ(log.count(R"(BusinessHoursStartTime and BusinessHoursEndTime are both "09:00": no moment is within)"), 1U);
}

TEST_F(PreferenceManagerTest, ListsMayBeOneTextAndBlankTextsMeanAbsent) {
  domains.setManaged({{"IgnoredLabels", "zoom*  firefox\n*"},
                      {"RequiredLabels", PlistArray{"a b", 7, "c"}},
                      {"IgnoreFilePaths", "/Applications/My Tools\n\n  /Vol  \n/Vol"},
                      {"BusinessHoursStartTime", " "},
                      {"AppTitle", "  "},
                      {"NotificationPolicy", PlistDict{{"updatesAvailable", "PERSISTENT"},
                                                       {"hardDeadlineReminder", "banner"},
                                                       {"deferralResuming", "loud"}}}});
  const auto config = preferences.loadConfiguration();
  EXPECT_THAT(config->ignoredLabels, ElementsAre("zoom*", "firefox", "*"));
  EXPECT_THAT(config->requiredLabels, ElementsAre("a", "b", "c"));
  EXPECT_THAT(config->sanitizedIgnoreFilePaths(), ElementsAre("/Applications/My Tools", "/Vol"));
  EXPECT_EQ(config->businessHoursStartTime, std::nullopt);
  EXPECT_EQ(config->appTitle, "Corvane");
  using enum CRVNotificationType;
  EXPECT_EQ(config->notificationPolicy.presentationFor(updatesAvailable), CRVNotificationPresentation::persistent);
  EXPECT_EQ(config->notificationPolicy.presentationFor(hardDeadlineReminder), CRVNotificationPresentation::banner);
  EXPECT_EQ(config->notificationPolicy.presentationFor(deferralResuming), CRVNotificationPresentation::banner);
  EXPECT_EQ(CRVNotificationPolicy{}.presentationFor(hardDeadlineReminder), CRVNotificationPresentation::persistent);
}

TEST_F(PreferenceManagerTest, FlexibleBooleansComeInManyForms) {
  const std::pair<PlistValue, bool> forms[] = {{true, true},   {1, true},     {0, false},    {2.5, true},
                                               {"TRUE", true}, {"yes", true}, {"1", true},   {"on", true},
                                               {"no", false},  {"0", false},  {false, false}};
  for (const auto& [value, expected] : forms) {
    domains.setUser({{"OpenAtLogin", value}});
    EXPECT_EQ(preferences.readFlexibleBool("OpenAtLogin", !expected), expected);
  }
  domains.setUser({{"OpenAtLogin", "perhaps"}});
  EXPECT_TRUE(preferences.readFlexibleBool("OpenAtLogin", true));
}

TEST_F(PreferenceManagerTest, WritesAreSeenAtOnceAndDeletesShowTheDefault) {
  EXPECT_EQ(preferences.loadConfiguration()->daysUntilReset, 7);
  preferences.writePreference("DaysUntilReset", 14);
  EXPECT_EQ(preferences.loadConfiguration()->daysUntilReset, 14);
  EXPECT_EQ(preferences.readPreference("DaysUntilReset", std::int64_t{0}), 14);
  EXPECT_EQ(preferences.readPreference("DaysUntilReset", std::string("x")), "x");
  preferences.deletePreference("DaysUntilReset");
  EXPECT_EQ(preferences.loadConfiguration()->daysUntilReset, 7);
}

TEST_F(PreferenceManagerTest, AFailedWriteWarnsWithItsKey) {
  domains.failChanges(Error{"CRVFiles", 28, "No space left on device"});
  preferences.writeLastAutoHelperResetDate(date);
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(log.lines()[0].level, LogLevel::warning);
  EXPECT_EQ(log.lines()[0].message,
            "PreferenceManager: Could not write LastAutoHelperResetDate: No space left on device");
  EXPECT_EQ(preferences.readLastAutoHelperResetDate(), std::nullopt);
}

TEST_F(PreferenceManagerTest, NextAutoLaunchChangesDateAndFlagsTogether) {
  int told = 0;
  const auto lease = notifications.observe<CorvaneNextAutoLaunchDidChange>([&](const auto&) {
    ++told;
    EXPECT_EQ(preferences.readNextAutoLaunch().has_value(), userHas("PatchErrorRetryArmed"));
  });
  const auto before = domains.user().version;
  preferences.writeNextAutoLaunch(date, true, false);
  EXPECT_EQ(domains.user().version, before + 1);
  EXPECT_EQ(preferences.readNextAutoLaunch(), date);
  EXPECT_TRUE(preferences.readAutomaticFocusDeferralArmed());
  EXPECT_FALSE(preferences.readPatchErrorRetryArmed());
  preferences.writeNextAutoLaunch(date, false, true);
  EXPECT_FALSE(preferences.readAutomaticFocusDeferralArmed());
  preferences.clearPatchErrorRetryArmed();
  EXPECT_FALSE(preferences.readPatchErrorRetryArmed());
  preferences.writePreference("PatchErrorRetryArmed", true);
  preferences.clearNextAutoLaunch();
  EXPECT_TRUE(domains.user().values->empty());
  EXPECT_EQ(told, 3);
}

TEST_F(PreferenceManagerTest, StateComesBack) {
  const CadenceState cadence{.currentPatchingStartDate = date, .nextCycleStartDate = date + 24h};
  preferences.writePatchingCadenceState({date, date, date});
  preferences.writePatchingCadenceState(cadence);
  EXPECT_EQ(preferences.readPatchingCadenceState(), cadence);
  EXPECT_FALSE(userHas("LastPatchingCompletionDate"));

  EXPECT_TRUE(preferences.readUpdateAllErrorClearedLabels().empty());
  preferences.addUpdateAllErrorClearedLabels({Label("b"), Label("a")});
  preferences.addUpdateAllErrorClearedLabels({Label("b"), Label("c")});
  EXPECT_THAT(preferences.readUpdateAllErrorClearedLabels(), ElementsAre(Label("a"), Label("b"), Label("c")));
  preferences.clearUpdateAllErrorClearedLabels();
  EXPECT_TRUE(preferences.readUpdateAllErrorClearedLabels().empty());

  preferences.writePreference("HardDeferralCount", 2);
  EXPECT_EQ(preferences.readDeferralInfo(), (DeferralInfo{.hardDeferralCount = 2}));
  EXPECT_EQ(preferences.readDeferralDialogPrimaryButton(), "continue");
  domains.setManaged({{"DeferralDialogPrimaryButton", "Defer"}, {"MenuBarHideQuit", true}});
  EXPECT_EQ(preferences.readDeferralDialogPrimaryButton(), "defer");
  EXPECT_TRUE(preferences.readMenuBarHideQuit());
}

TEST_F(PreferenceManagerTest, DamagedInventoryIsAbsentAndNotOverwritten) {
  EXPECT_EQ(preferences.readDiscoveredApps(), std::nullopt);
  const Apps apps{AppInfo{.label = Label("quill"), .name = "Quill", .newVersion = "2"}};
  preferences.writeDiscoveredApps(apps);
  EXPECT_EQ(preferences.readDiscoveredApps(), apps);
  domains.setUser({{"DiscoveredAppsData", PlistData{"[{\"label\":"}}});
  EXPECT_EQ(preferences.readDiscoveredApps(), std::nullopt);
  EXPECT_EQ(preferences.readDiscoveredApps(), std::nullopt);
  EXPECT_EQ(log.count("DiscoveredAppsData is damaged"), 1U);
  EXPECT_TRUE(userHas("DiscoveredAppsData"));
}

TEST_F(PreferenceManagerTest, TheConfigurationStaysWhileOnlyStateChanges) {
  const auto inForce = [this] { return &*preferences.loadConfiguration(); };
  preferences.writePreference("IgnoredLabels", std::vector<std::string>{"old"});
  const auto held = preferences.loadConfiguration();
  const auto before = preferences.moment();
  preferences.writeNextAutoLaunch(date, false, true);
  EXPECT_EQ(inForce(), &*held);
  EXPECT_EQ(before->nextAutoLaunch, std::nullopt) << "a moment stays as it was";
  EXPECT_EQ(preferences.moment()->nextAutoLaunch, date);
  preferences.deletePreference("IgnoredLabels");
  EXPECT_TRUE(preferences.loadConfiguration()->ignoredLabels.empty());
  preferences.writePreference("AppIgnoredLabels", std::vector<std::string>{"former"});
  EXPECT_THAT(preferences.loadConfiguration()->ignoredLabels, ElementsAre("former"));
  domains.setManaged({{"IgnoredLabels", "managed"}});
  EXPECT_THAT(preferences.loadConfiguration()->ignoredLabels, ElementsAre("managed"));
}

TEST_F(PreferenceManagerTest, AnotherProgramsChangeIsTakenLikeASave) {
  int told = 0;
  const auto lease = notifications.observe<CorvaneSettingsDidChange>([&](const auto&) { ++told; });
  auto watch = preferences.startWatching();
  preferences.writePreference("DaysUntilReset", 14);
  machine.runUntilIdle();
  EXPECT_EQ(told, 0);
  domains.setManaged({{"DaysUntilReset", 21}});
  machine.runUntilIdle();
  EXPECT_EQ(told, 1);
  watch.release();
  domains.setManaged({});
  machine.runUntilIdle();
  EXPECT_EQ(told, 1);
}

TEST_F(PreferenceManagerTest, ThreadsReadWholeConfigurations) {
  std::vector<std::jthread> readers;
  for (int i = 0; i < 3; ++i)
    readers.emplace_back([&] {
      for (int n = 0; n < 200; ++n) {
        const auto config = preferences.loadConfiguration();
        EXPECT_TRUE(config->daysUntilReset == 7 || config->daysUntilReset == 14);
      }
    });
  for (int n = 0; n < 50; ++n) preferences.writePreference("DaysUntilReset", n % 2 == 0 ? 14 : 7);
}

TEST(AppDisplayTitle, ReplacesTheWholeWordOnly) {
  const AppDisplayTitle title("Fleet Updates");
  const std::pair<const char*, const char*> rows[] = {
      {"Quit Corvane", "Quit Fleet Updates"},
      {"Corvane stopped. Ask Corvane.", "Fleet Updates stopped. Ask Fleet Updates."},
      {"“Corvane” and Corvane’s log", "“Fleet Updates” and Fleet Updates’s log"},
      {"/Applications/Corvane.app", "/Applications/Corvane.app"},
      {"org.corvane.Corvane, CorvaneRootHelper", "org.corvane.Corvane, CorvaneRootHelper"},
      {"corvane4", "corvane4"},
      {"", ""}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(title.userFacing(text), expected);
  EXPECT_EQ(AppDisplayTitle(" ").current(), "Corvane");
  EXPECT_EQ(AppDisplayTitle("Corvane Corvane").userFacing("Corvane"), "Corvane Corvane");
}

}  // namespace
}  // namespace corvane
