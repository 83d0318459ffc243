#include "settings/settings_view_model.h"

#include "support/scripted_preferences.h"
#include "support/test.h"

namespace corvane {
namespace {

// Writes down each change of the user's domain.
class WrittenDomains final : public PreferenceDomains {
 public:
  explicit WrittenDomains(PreferenceDomains& domains) : domains_(domains) {}
  std::vector<std::string> written;

  [[nodiscard]] DomainSnapshot user() const override { return domains_.user(); }
  [[nodiscard]] DomainSnapshot managed() const override { return domains_.managed(); }
  Lease watch(std::function<void()> changed) override { return domains_.watch(std::move(changed)); }
  Status changeUser(const std::function<void(PlistDict&)>& change) override {
    return domains_.changeUser([&](PlistDict& domain) {
      const auto before = domain;
      change(domain);
      for (const auto& [key, value] : domain)
        if (!before.contains(key) || before.at(key) != value) written.push_back(key);
      for (const auto& [key, value] : before)
        if (!domain.contains(key)) written.push_back("-" + key);
    });
  }

 private:
  PreferenceDomains& domains_;
};

struct CountedTelemetry final : TelemetrySwitch {
  bool runs = false;
  int starts = 0;
  int stops = 0;
  [[nodiscard]] bool started() const override { return runs; }
  void start() override { runs = true, ++starts; }
  void stop() override { runs = false, ++stops; }
};

struct SettingsViewModelTest : ::testing::Test, testing::ScriptedPreferences {
  SettingsViewModel make() { return SettingsViewModel({store, notifications, telemetry, machine.clock(), log}); }
  [[nodiscard]] const PlistDict& user() { return *domains.user().values; }

  WrittenDomains recorded{domains};
  PreferenceManager store{recorded, notifications, log};
  CountedTelemetry telemetry;
};

TEST_F(SettingsViewModelTest, savesEveryKeyInItsOrderAndRemovesWhatIsEmpty) {
  PlistDict odd;  // values of no use, so that each write shows
  for (const auto& setting : kSettings) odd.emplace(setting.key, PlistData{"odd"});
  domains.setUser(std::move(odd));
  auto model = make();
  std::size_t writtenBefore = 0;
  const auto heard =
      notifications.observe<CorvaneSettingsDidChange>([&](const auto&) { writtenBefore = recorded.written.size(); });
  model.save();
  const std::vector<std::string> order = {"IgnoredLabels",
                                          "-AppIgnoredLabels",
                                          "RequiredLabels",
                                          "OptionalLabels",
                                          "DeferralTimerDefault",
                                          "DeferralTimerFocus",
                                          "FocusDeferralNotificationsEnabled",
                                          "-IgnoreDNDApps",
                                          "-DeadlineCountFocus",
                                          "-DeadlineCountHard",
                                          "-DeadlineDaysFocus",
                                          "-DeadlineDaysHard",
                                          "PatchWeekStartDay",
                                          "DaysUntilReset",
                                          "MonthlyPatchingCadenceEnabled",
                                          "MonthlyPatchingCadenceOrdinalValue",
                                          "MonthlyPatchingCadenceWeekdayIndex",
                                          "-BusinessHoursStartTime",
                                          "-BusinessHoursEndTime",
                                          "InstallomatorVersion",
                                          "InstallomatorOptions",
                                          "GitHubAPIAuthEnabled",
                                          "InstallomatorAssembleFromFragments",
                                          "-GitHubAPIToken",
                                          "VersionComparisonMethod",
                                          "VersionComparisonInstallomatorFallback",
                                          "WebhookFeature",
                                          "-WebhookURLSlack",
                                          "-WebhookURLTeams",
                                          "TelemetryEnabled",
                                          "VerboseMode",
                                          "DebugMode",
                                          "AutoResetHelperOnLaunch",
                                          "WorkflowStageUpdates",
                                          "WorkflowUpdateAllErrorCompletesPatching",
                                          "BackgroundPatchClosedAppsEnabled",
                                          "BackgroundPatchClosedAppsIntervalHours",
                                          "BackgroundPatchClosedAppsRequireOnAC",
                                          "BackgroundPatchAtLogin",
                                          "BackgroundPatchClosedAppsAllowList",
                                          "BackgroundPatchClosedAppsBlockList",
                                          "BackgroundPatchClosedAppsNotifyOnCompletion",
                                          "BackgroundPatchClosedAppsScheduler",
                                          "UpdatesAvailableNotificationsEnabled",
                                          "-IgnoreFilePaths",
                                          "IgnoreExternalDrives",
                                          "SelfUpdateEnabled",
                                          "SelfUpdateLabel",
                                          "SelfUpdateFrequency",
                                          "DiscoverSelfUpdateLabel"};
  EXPECT_EQ(recorded.written, order);
  EXPECT_EQ(writtenBefore, order.size()) << "who hears of it sees all of it";
  EXPECT_EQ(model.lastSavedAt(), machine.now());
  EXPECT_EQ(user().at("InstallomatorOptions").string(),
            "BLOCKING_PROCESS_ACTION=tell_user IGNORE_APP_STORE_APPS=no INTERRUPT_DND=yes LOGO=appstore NOTIFY=success "
            "PROMPT_TIMEOUT=86400 REOPEN=yes SYSTEMOWNER=0");
  EXPECT_EQ(user().at("VersionComparisonMethod").string(), "IS_AT_LEAST");

  writtenBefore = 0;
  model.save();
  EXPECT_EQ(recorded.written.size(), order.size());
  EXPECT_GT(writtenBefore, 0U) << "told although nothing differs";
}

TEST_F(SettingsViewModelTest, bringsEditsBackAsTheyWere) {
  auto model = make();
  EXPECT_FALSE(model.hasEdits());
  model.setText("IgnoredLabels", " zoom*\n googlechrome ");
  model.setText("IgnoreFilePaths", " /Volumes/A b \n\n/Volumes/A b\n");
  model.setText("GitHubAPIToken", " github_pat_1\r\n23\n ");
  model.setText("WebhookURLSlack", "https://hooks.example/a\n");
  model.setText("IgnoreDNDApps", " Google Chrome, caffeinate ");
  model.setValue("DeadlineCountHard", 5);
  model.setValue("MonthlyPatchingCadenceOrdinalValue", "final");
  model.setValue("DaysUntilReset", "many");  // another type
  EXPECT_TRUE(model.hasEdits());
  model.save();
  EXPECT_FALSE(model.hasEdits());
  EXPECT_EQ(model.config.githubAPIToken, "github_pat_123");
  EXPECT_EQ(user().at("IgnoreFilePaths"), PlistValue(PlistArray{"/Volumes/A b"}));
  const auto again = make();
  EXPECT_THAT(again.config.ignoredLabels, ElementsAre("zoom*", "googlechrome"));
  EXPECT_EQ(again.config.ignoreDNDApps, "Google Chrome, caffeinate");
  EXPECT_EQ(again.config.webhookURLSlack, "https://hooks.example/a");
  EXPECT_EQ(again.config.deadlineCountHard, 5);
  EXPECT_EQ(again.config.monthlyPatchingCadenceOrdinalValue, OrdinalValue::final);
  EXPECT_EQ(again.config.daysUntilReset, 7);
  EXPECT_EQ(again.text("IgnoredLabels"), "zoom* googlechrome");

  EXPECT_EQ(log.count("SettingsViewModel: Saved settings - ignoredLabels=[zoom* googlechrome], requiredLabels=[], "),
            1U);
  EXPECT_TRUE(log.holds("deadlineCountHard=5, deadlineDaysHard=none, installomatorVersion=release"));
  EXPECT_FALSE(log.holds("github_pat") || log.holds("hooks.example"));

  model.setText("GitHubAPIToken", "   ");
  model.setText("WebhookURLSlack", "");
  model.setValue("DeadlineCountHard", PlistValue());
  model.save();
  EXPECT_EQ(model.config.githubAPIToken, "");
  for (const auto* key : {"GitHubAPIToken", "WebhookURLSlack", "DeadlineCountHard"})
    EXPECT_FALSE(user().contains(key)) << key;
}

TEST_F(SettingsViewModelTest, keepsWhatNoControlOfTheOptionsKnows) {
  domains.setUser({{"InstallomatorOptions", "NOTIFY=loud FOO=bar LOGO=/a/b.icns PROMPT_TIMEOUT=abc"}});
  auto model = make();
  EXPECT_EQ(model.value("LOGO").string(), "custom");
  EXPECT_EQ(model.value(SettingsViewModel::kLogoPath).string(), "/a/b.icns");
  EXPECT_EQ(model.value("NOTIFY").string(), "loud");
  model.setValue("REOPEN", false);
  model.save();
  EXPECT_EQ(user().at("InstallomatorOptions").string(),
            "BLOCKING_PROCESS_ACTION=tell_user FOO=bar IGNORE_APP_STORE_APPS=no INTERRUPT_DND=yes LOGO=/a/b.icns "
            "NOTIFY=loud PROMPT_TIMEOUT=86400 REOPEN=no SYSTEMOWNER=0");
}

TEST_F(SettingsViewModelTest, aLockedWindowWritesNothing) {
  domains.setManaged({{"LockSettings", true}});
  auto model = make();
  for (const auto& setting : kSettings)
    EXPECT_TRUE(model.flags().isManaged(setting.group) || setting.group == ManagedGroup::supportInfo) << setting.key;
  EXPECT_FALSE(model.flags().isSupportInfoManaged);
  EXPECT_TRUE(model.hasManagedSettings() && model.isSettingsLocked());
  bool told = false;
  const auto heard = notifications.observe<CorvaneSettingsDidChange>([&](const auto&) { told = true; });
  model.setValue("VerboseMode", true);
  model.save();
  EXPECT_FALSE(told || model.lastSavedAt() || !user().empty() || telemetry.starts > 0);
}

TEST_F(SettingsViewModelTest, whatIsManagedIsSavedAndStaysInForce) {
  domains.setManaged({{"DeferralTimerDefault", std::int64_t{120}}});
  auto model = make();
  auto flags = ManagedFlags();
  flags.isDeferralSettingsManaged = true;
  EXPECT_EQ(model.flags(), flags);
  EXPECT_TRUE(model.hasManagedSettings());
  model.config.deferralTimerDefault = 15;
  model.save();
  EXPECT_EQ(user().at("DeferralTimerDefault").integer(), 15);
  EXPECT_EQ(preferences.loadConfiguration()->deferralTimerDefault, 120);

  for (const auto* quiet : {"SupportTeamName", "InstallomatorAssembleFromFragments"}) {
    domains.setManaged({{quiet, true}});
    EXPECT_FALSE(make().hasManagedSettings()) << quiet;
  }
}

TEST_F(SettingsViewModelTest, showsOfTheSupportTeamWhatIsMeant) {
  const std::tuple<const char*, std::optional<std::string>> names[] = {{"", {}},
                                                                       {"  ", {}},
                                                                       {"HIDE", {}},
                                                                       {" Add IT Support ", {}},
                                                                       {"add it support", "add it support"},
                                                                       {"Team ", "Team"},
                                                                       {"hide me", "hide me"}};
  for (const auto& [given, expected] : names) {
    domains.setManaged({{"SupportTeamName", given}});
    const auto model = make();
    EXPECT_EQ(SupportInfo::of(model.config).name, expected) << given;
    EXPECT_EQ(model.hasSupportInfo(), expected.has_value());
  }
}

TEST_F(SettingsViewModelTest, theSaveStartsAndStopsUsageSignals) {
  auto model = make();
  model.save();
  EXPECT_EQ(telemetry.starts, 1);
  model.setValue("TelemetryEnabled", false);
  EXPECT_TRUE(telemetry.runs) << "not before the save";
  model.save();
  model.save();
  EXPECT_EQ(telemetry.stops, 1);
}

TEST_F(SettingsViewModelTest, rememberBusinessHoursWhileTheyAreOff) {
  auto model = make();
  model.holdBusinessHours(true);
  EXPECT_EQ(model.text("BusinessHoursStartTime") + model.text("BusinessHoursEndTime"), "09:0017:00");
  model.setText("BusinessHoursStartTime", "08:15");
  model.holdBusinessHours(false);
  EXPECT_FALSE(model.holdsBusinessHours() || model.config.businessHoursEndTime);
  model.holdBusinessHours(true);
  EXPECT_EQ(model.text("BusinessHoursStartTime"), "08:15");
}

}  // namespace
}  // namespace corvane
