#include "presentation/settings_controller.h"

#include "core/preferences/installer_options.h"
#include "platform/scripted/scripted_user_notifications.h"
#include "workflow/workflow_fixture.h"

namespace corvane {
namespace {

struct QuietTelemetry final : TelemetrySwitch {
  [[nodiscard]] bool started() const override { return false; }
  void start() override {}
  void stop() override {}
};

struct SettingsControllerTest : WorkflowTest {
  void open() {
    controller.reset();
    if (!model) build();
    controller = std::make_unique<SettingsController>(
        *model, services,
        SettingsParts{telemetry,
                      center,
                      ownBundle,
                      nullptr,
                      [this](Completion<Result<std::filesystem::path>> done) { bundleDone = std::move(done); },
                      {}});
  }
  void openTab(std::string_view tab) {
    open();
    controller->selectTab(std::string(tab));
    settle();
  }
  const SettingsControl& control(std::string_view key) {
    settle();
    for (const auto& section : controller->page().sections)
      for (const auto& each : section.controls)
        if (each.key == key) return each;
    ADD_FAILURE() << "no control " << key;
    static const SettingsControl none;
    return none;
  }
  [[nodiscard]] bool has(std::string_view key) {
    settle();
    return std::ranges::any_of(controller->page().sections, [&](const auto& section) {
      return std::ranges::count(section.controls, key, &SettingsControl::key) > 0;
    });
  }

  QuietTelemetry telemetry;
  ScriptedUserNotifications center{time.main()};
  ScriptedOwnBundle ownBundle;
  Completion<Result<std::filesystem::path>> bundleDone;
  std::unique_ptr<SettingsController> controller;
};

TEST_F(SettingsControllerTest, everyKeyStandsOnceAndEverySavedOneHasAControl) {
  manage({{"AdminTestModeEnabled", true}, {"SupportTeamName", "Desk"}});
  open();
  controller->set("showAdvancedOptions", "true");
  controller->set("LOGO", "custom");
  std::set<std::string> keys;
  for (const auto* tab : {"installomator", "deferrals", "advanced", "about"}) {
    controller->selectTab(tab);
    settle();
    controller->set("BusinessHours", "true");
    settle();
    for (const auto& section : controller->page().sections)
      for (const auto& each : section.controls) EXPECT_TRUE(keys.insert(each.key).second) << each.key;
  }
  for (const auto* setting : settings_rows::inSaveOrder)
    EXPECT_TRUE(keys.contains(std::string(setting->key)) || setting->key == "AppIgnoredLabels" ||
                setting->key == "InstallomatorOptions")
        << setting->key;
  EXPECT_EQ(controller->page().bannerCaption, "Contact Desk with questions about configured settings.");
}

TEST_F(SettingsControllerTest, thePickersOfferWhatTheToolTakes) {
  openTab("installomator");
  for (const auto* key : {"NOTIFY", "BLOCKING_PROCESS_ACTION", "LOGO"}) {
    std::vector<std::string> offered;
    for (const auto& choice : control(key).choices)
      if (choice.value != "custom") offered.push_back(choice.value);
    EXPECT_TRUE(std::ranges::equal(offered, findInstallerOption(key)->values)) << key;
  }
}

TEST_F(SettingsControllerTest, stepsWithinTheRangeAndTowardsItFromOutside) {
  preferences.writePreference("DeadlineCountHard", std::int64_t{50});
  openTab("deferrals");
  EXPECT_EQ(control("DeadlineCountHard").value, "50 deferrals");
  EXPECT_FALSE(control("DeadlineCountHard").mayIncrease);
  controller->step("DeadlineCountHard", -1);
  EXPECT_EQ(control("DeadlineCountHard").value, "10 deferrals");
  controller->switchOn("DeadlineCountHard", false);
  EXPECT_FALSE(control("DeadlineCountHard").isOn || control("DeadlineCountHard").mayDecrease);
  controller->step("DeadlineCountHard", 1);
  EXPECT_EQ(control("DeadlineCountHard").value, "No limit");
  controller->switchOn("DeadlineCountHard", true);
  EXPECT_EQ(control("DeadlineCountHard").value, "10 deferrals");
  const std::tuple<const char*, std::int64_t, const char*> steps[] = {{"DeferralTimerDefault", 2, "1 hour, 30 minutes"},
                                                                      {"DeferralTimerDefault", 1000, "24 hours"},
                                                                      {"DeferralTimerFocus", -1000, "1 minute"},
                                                                      {"DeferralTimerFocus", 1, "6 minutes"},
                                                                      {"DaysUntilReset", 1, "8 days"},
                                                                      {"DaysUntilReset", -1000, "1 day"}};
  for (const auto& [key, by, text] : steps) {
    controller->step(key, by);
    EXPECT_EQ(control(key).value, text);
  }
}

TEST_F(SettingsControllerTest, showsWhatIsTypedAndSaysWhatIsWrongWithIt) {
  openTab("advanced");
  controller->set("IgnoredLabels", "zoom ");
  EXPECT_EQ(control("IgnoredLabels").value, "zoom ") << "the blank before the next word stays";
  controller->set("IgnoredLabels", "zoom a/b");
  EXPECT_EQ(control("IgnoredLabels").problem, "“a/b” is no label and no pattern of labels.");
  controller->set("WebhookURLSlack", "http://x\n");
  EXPECT_EQ(control("WebhookURLSlack").value, "http://x");
  EXPECT_NE(control("WebhookURLSlack").problem, "");
  EXPECT_EQ(control("WebhookURLSlack").revealText, "Reveal URL");
  controller->reveal("WebhookURLSlack", true);
  EXPECT_TRUE(control("WebhookURLSlack").isRevealed);
  EXPECT_EQ(control("WebhookURLSlack").revealText, "Hide URL");
  controller->selectTab("deferrals");
  settle();
  controller->set("BusinessHours", "true");
  settle();
  controller->set("BusinessHoursEndTime", "25");
  EXPECT_NE(control("BusinessHoursEndTime").problem, "");
  controller->set("BusinessHoursEndTime", "09:00");
  EXPECT_EQ(control("BusinessHoursEndTime").problem, "Start and end are the same, so no moment lies between them.");

  EXPECT_TRUE(controller->page().hasEdits && controller->page().save.enabled);
  controller->save();
  settle();
  EXPECT_FALSE(controller->page().hasEdits);
  EXPECT_TRUE(controller->page().savedText.starts_with("Settings saved at "));
  EXPECT_THAT(preferences.loadConfiguration()->ignoredLabels, ElementsAre("zoom", "a/b"));
}

TEST_F(SettingsControllerTest, whatTheOrganisationDecidesCannotBeChangedByItsKey) {
  manage({{"DeferralTimerDefault", std::int64_t{120}}, {"GitHubAPIToken", "secret"}});
  openTab("deferrals");
  EXPECT_EQ(control("DaysUntilReset").managed, "Provided by your organization through managed configuration.");
  controller->step("DaysUntilReset", 1);
  controller->set("PatchWeekStartDay", "5");
  controller->set("VerboseMode", "true");  // of another tab
  settle();
  EXPECT_FALSE(controller->page().hasEdits);
  EXPECT_EQ(controller->page().bannerTitle, "Some settings are managed by your organization");
  controller->selectTab("installomator");
  EXPECT_EQ(control("GitHubAPIToken").value, "••••••••");
  manage({{"LockSettings", true}});
  openTab("about");
  EXPECT_EQ(controller->page().bannerTitle, "Settings are managed by your organization");
  EXPECT_FALSE(controller->page().save.enabled || control("resetHelper").enabled || control("ShowMenuBarIcon").enabled);
}

TEST_F(SettingsControllerTest, asksBeforeTheHelperIsResetAndTellsHowItEnded) {
  openTab("about");
  EXPECT_EQ(control("installedRuntime").value, "Not installed yet");
  const std::tuple<HelperStatus, bool, const char*> ends[] = {
      {HelperStatus::enabled, true, "Helper re-registered and is running."},
      {HelperStatus::enabled, false, "Helper registered, but the daemon did not start. Try Reset Helper again."},
      {HelperStatus::requiresApproval, false, "Re-registered. Approve in System Settings › Login Items & Extensions."},
      {HelperStatus::notRegistered, false,
       "Re-registration completed but daemon is not yet registered — try again or reboot."},
      {HelperStatus::notFound, false,
       "Re-registration completed but daemon was not found — verify the helper is embedded in the app bundle."},
      {HelperStatus::unknown, false, "Re-registration completed; status unknown."}};
  for (const auto& [status, beats, text] : ends) {
    registration.afterRegister = status;
    registration.onRegister = [&, alive = beats] {
      (void)files.remove(places.helperHeartbeat());
      if (alive) files.put(places.helperHeartbeat(), "");
    };
    controller->press("resetHelper");
    settle();
    EXPECT_EQ(controller->page().question.title, "Reset Root Helper?");
    controller->answer(true);
    settle();
    advance(20s);
    EXPECT_EQ(control("resetResult").value, text);
    EXPECT_FALSE(installation.isResetInFlight());
  }
  const auto asked = registration.registered;
  controller->press("resetHelper");
  controller->answer(false);
  advance(20s);
  EXPECT_EQ(registration.registered, asked);
}

TEST_F(SettingsControllerTest, theVersionOfTheSystemIsShownWhereItsFileStatesOne) {
  const auto file = places.root / "System/Library/CoreServices/SystemVersion.plist";
  const auto document = [](const std::string& value) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>ProductVersion</key>" + value + "</dict></plist>";
  };
  openTab("about");
  EXPECT_FALSE(has("systemVersion"));
  const auto binary = writePlist(PlistDict{{"ProductVersion", "26.1"}}, PlistFormat::binary);
  for (const auto& bytes : {document("<string>26.1</string>"), *binary}) {
    files.put(file, bytes);
    openTab("about");
    EXPECT_EQ(control("systemVersion").value, "26.1");
  }
  for (const auto& bytes :
       {std::string(), std::string("no property list"), binary->substr(0, binary->size() / 2),
        document("<integer>26</integer>"), document("<string></string>"), document("<string> </string>"),
        document("<array><string>26.1</string></array>"),
        std::string("<?xml version=\"1.0\"?><plist version=\"1.0\"><array><string>26.1</string></array></plist>")}) {
    files.put(file, bytes);
    openTab("about");
    EXPECT_FALSE(has("systemVersion")) << bytes;
  }
  files.failPath(file, EIO);
  openTab("about");
  EXPECT_FALSE(has("systemVersion"));
}

TEST_F(SettingsControllerTest, aBundleIsToldOfAlsoWhenTheWindowHasGone) {
  openTab("about");
  controller->press("generateBundle");
  EXPECT_FALSE(control("generateBundle").enabled);
  bundleDone(std::filesystem::path("/home/a/Desktop/b.zip"));
  EXPECT_EQ(control("bundleResult").value, "Saved to b.zip on your Desktop.");
  controller->press("generateBundle");
  settle();
  bundleDone(failure("x", 1, "The disk is full."));
  EXPECT_EQ(control("bundleResult").value, "The disk is full.");
  EXPECT_TRUE(log.holds("AboutSettings: Diagnostic bundle generation failed: The disk is full."));
  controller->press("generateBundle");
  controller.reset();
  bundleDone(std::filesystem::path("/home/a/Desktop/c.zip"));
  EXPECT_TRUE(log.holds("AboutSettings: Diagnostic bundle written to /home/a/Desktop/c.zip"));
  EXPECT_EQ(std::ranges::count(signals.sent, "Diagnostic.generated", &UsageSignal::name), 2);
}

TEST_F(SettingsControllerTest, theTestModeCanBeReachedOnlyWhereItIsOn) {
  openTab("deferrals");
  EXPECT_FALSE(has("FocusDeferralCount"));
  controller->step("FocusDeferralCount", 1);
  controller->press("triggerHardDeadlinePrompt");
  settle();
  EXPECT_EQ(preferences.readDeferralInfo(), DeferralInfo());
  manage({{"AdminTestModeEnabled", true}, {"DeadlineDaysHard", std::int64_t{3}}});
  openTab("deferrals");
  EXPECT_EQ(controller->page().sections.back().title, "⚠️ Admin Test Mode");
  controller->step("FocusDeferralCount", 2);
  EXPECT_EQ(preferences.readDeferralInfo().focusDeferralCount, 2);
  controller->set("nextLaunchOverride", "2026-12-24 17:3");
  EXPECT_NE(control("nextLaunchOverride").problem, "");
  controller->set("nextLaunchOverride", "2026-12-24 17:30");
  controller->press("applyNextLaunch");
  EXPECT_EQ(control("lastActionMessage").help, "Updated next auto-launch.");
  const auto calendar = services.locale.calendar();
  EXPECT_EQ(preferences.readNextAutoLaunch(), dateFromField("2026-12-24 17:30", calendar));
  controller->set("anchorOverride", "2026-10-31 00:00");
  controller->press("applyAnchor");
  settle();
  EXPECT_EQ(preferences.readPatchingCadenceState().currentPatchingStartDate,
            dateFromField("2026-10-31 00:00", calendar));
  EXPECT_TRUE(preferences.readPreference("AdminTestModeAnchorOverrideActive", false));
  EXPECT_TRUE(preferences.readDeferralInfo().hardDeferralDate);
  controller->press("useConfiguredCadence");
  settle();
  EXPECT_FALSE(preferences.readPreference("AdminTestModeAnchorOverrideActive", false));
  controller->press("triggerHardDeadlinePrompt");
  EXPECT_LT(*preferences.readDeferralInfo().hardDeferralDate, time.now());
  controller->press("resetDeferralState");
  settle();
  EXPECT_EQ(preferences.readDeferralInfo(), DeferralInfo());
}

}  // namespace
}  // namespace corvane
