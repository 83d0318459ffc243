#include "background/background_patch_scheduler.h"

#include "background/background_fixture.h"

namespace corvane {
namespace {

AppInfo at(const char* name, const char* path, const char* identifier = nullptr) {
  auto app = outdated(name);
  if (path != nullptr) app.appPath = path;
  if (identifier != nullptr) app.packageID = identifier;
  return app;
}

struct BackgroundPatchSchedulerTest : BackgroundTest {
  BackgroundPatchSchedulerTest() {
    set("BackgroundPatchClosedAppsEnabled", PlistValue(true));
    set("BackgroundPatchClosedAppsNotifyOnCompletion", PlistValue(false));
    set("WorkflowStageUpdates", PlistValue(false));
    // The user knows of more than is open here, so that no prompt comes between.
    preferences.writeLastNotifiedPendingUpdatesCount(100);
  }
  void schedule(const Apps& apps) {
    preferences.writePreference("LastUpdateCheckDate", time.now());
    buildWith(apps);
    scheduler = std::make_unique<BackgroundPatchScheduler>(*model, background);
  }
  ClosedAppsOutcome ask() {
    std::optional<ClosedAppsOutcome> answer;
    scheduler->patchClosedApps([&](ClosedAppsOutcome outcome) { answer = outcome; });
    settle();
    if (!answer && !helper.runs.empty()) answerRun(PatchRunAnswer{.success = true, .installedCount = 1});
    return answer.value_or(ClosedAppsOutcome::helperPassRunning);
  }
  void tick() {
    scheduler->tick();
    settle();
  }
  [[nodiscard]] bool says(std::string_view line) const {
    return log.holds("BackgroundPatchScheduler: " + std::string(line));
  }

  std::unique_ptr<BackgroundPatchScheduler> scheduler;
};

TEST_F(BackgroundPatchSchedulerTest, startsAfterWhatIsLeftOfTheIntervalOrTheJitter) {
  schedule({});
  const auto startLine = [&](std::optional<Duration> last, int hours, int jitter) {
    preferences.deletePreference("LastBackgroundPatchDate");
    if (last) preferences.writeLastBackgroundPatchDate(time.now() - *last);
    set("BackgroundPatchClosedAppsIntervalHours", PlistValue(hours));
    set("BackgroundPatchStartupJitterMaxMinutes", PlistValue(jitter));
    log.clear();
    scheduler->start();
    for (const auto& line : log.messages())
      if (line.find("Started") != std::string::npos) return line.substr(line.find("interval"));
    return std::string();
  };
  const std::string rest = ", requireAC=false, atLogin=false";
  set("BackgroundPatchClosedAppsRequireOnAC", PlistValue(false));
  set("BackgroundPatchAtLogin", PlistValue(false));
  EXPECT_EQ(startLine(std::nullopt, 4, 0), "interval=4h, firstFire=300s" + rest);
  EXPECT_EQ(startLine(3h, 4, 0), "interval=4h, firstFire=3600s" + rest);
  EXPECT_EQ(startLine(4h, 4, 0), "interval=4h, firstFire=300s" + rest);
  EXPECT_EQ(startLine(-48h, 4, 0), "interval=4h, firstFire=14400s" + rest) << "a clock that was set back";
  EXPECT_EQ(startLine(3h, 4, 1), "interval=4h, firstFire=300s" + rest) << "the rest of the interval is dropped";
  EXPECT_TRUE(says("Fleet startup jitter enabled (max 1m); resolved first-fire delay="));
  set("BackgroundPatchClosedAppsScheduler", PlistValue("helperDaemon"));
  EXPECT_EQ(startLine(std::nullopt, 4, 0), "");
  EXPECT_TRUE(says("Scheduler mode is helperDaemon; skipping in-app timer."));
  set("BackgroundPatchClosedAppsEnabled", PlistValue(false));
  EXPECT_EQ(startLine(std::nullopt, 4, 0), "");
  EXPECT_TRUE(says("Disabled in configuration; not scheduling."));
}

TEST_F(BackgroundPatchSchedulerTest, ticksUntilTheSettingsEndIt) {
  schedule({at("quill", "/Applications/Quill.app")});
  scheduler->start();
  advance(5min);
  ASSERT_EQ(helper.runs.size(), 1U);
  answerRun(PatchRunAnswer{.success = true, .installedCount = 1});
  EXPECT_EQ(preferences.readLastBackgroundPatchDate(), time.now());
  while (!helper.discoveries.empty()) answer(Apps{current("quill")});
  set("BackgroundPatchClosedAppsEnabled", PlistValue(false));
  advance(5h);
  EXPECT_TRUE(says("Tick skipped — feature disabled or mode changed."));
  log.clear();
  advance(24h);
  EXPECT_FALSE(says("Tick skipped"));
}

TEST_F(BackgroundPatchSchedulerTest, eachGateOfATickSaysWhy) {
  schedule({at("quill", "/Applications/Quill.app")});
  const auto skips = [&](std::string_view reason) {
    log.clear();
    tick();
    EXPECT_TRUE(says("Tick skipped — " + std::string(reason))) << reason;
    EXPECT_THAT(helper.runs, IsEmpty()) << reason;
  };
  model->checkForUpdates();
  skips("dashboard is busy (isPatching=false, isLoading=true).");
  answer(Apps{at("quill", "/Applications/Quill.app")});
  setHelperAlive(false);
  skips("helper not operational.");
  setHelperAlive(true);
  setScript(false);
  skips("Installomator not present.");
  setScript(true);
  power.onACPower = false;
  set("BackgroundPatchClosedAppsRequireOnAC", PlistValue(true));
  skips("on battery and require-AC is enabled.");
  completeCycle();
  model->refreshDeadlineDisplay();
  skips("patching is complete for this cycle.");
}

TEST_F(BackgroundPatchSchedulerTest, staleDataIsRenewedFirstWhereTheNetworkLeadsAnywhere) {
  schedule({at("quill", "/Applications/Quill.app")});
  set("BackgroundPatchClosedAppsIntervalHours", PlistValue(1));
  advance(1h);
  network.state = {.hasLink = true, .captivePortal = true};
  tick();
  EXPECT_FALSE(says("No internet")) << "an hour is not yet stale";
  ASSERT_EQ(helper.runs.size(), 1U);
  answerRun(PatchRunAnswer{.success = true});
  while (!helper.discoveries.empty()) answer(failure("CRVHelper", 1, "no"));
  advance(1s);
  const auto asked = helper.discoveriesAsked;
  tick();
  EXPECT_TRUE(says("No internet / captive portal detected — skipping network phases this tick."));
  EXPECT_EQ(helper.discoveriesAsked, asked);
  network.state = {.hasLink = true, .captivePortal = std::nullopt};
  network.takes = 5s;
  scheduler->tick();
  advance(5s);
  EXPECT_TRUE(says("Update data is stale; running Check for Updates this tick."));
  EXPECT_EQ(helper.discoveriesAsked, asked + 1);
}

TEST_F(BackgroundPatchSchedulerTest, somethingThatBeganWhileTheNetworkWasProbedIsNotRunOver) {
  schedule({at("quill", "/Applications/Quill.app")});
  advance(5h);
  network.takes = 5s;
  scheduler->tick();
  advance(1s);
  model->checkForUpdates();
  advance(10s);
  EXPECT_TRUE(says("Tick skipped — dashboard is busy"));
  EXPECT_EQ(helper.discoveries.size(), 1U);
}

TEST_F(BackgroundPatchSchedulerTest, onlyWhatIsCertainlyClosedIsPatched) {
  auto missing = makeApp({.label = "missing", .installed = nullptr, .latest = "2.0"});
  set("RequiredLabels", PlistValue(PlistArray{"missing", "blockedmissing"}));
  set("BackgroundPatchClosedAppsBlockList", PlistValue(PlistArray{"blocked", "blockedmissing"}));
  set("IgnoredLabels", PlistValue(PlistArray{"ignored"}));
  processes.open("/Applications/Open.app", "org.sample.open");
  processes.open("/Applications/Other.app", "org.sample.Byidentifier");
  schedule({at("closed", "/Applications/Closed.app", "org.sample.closed"), at("open", "/Applications/Open.app"),
            at("byid", "/Elsewhere/Byid.app", "org.sample.byIdentifier"), at("nothing", nullptr),
            at("blocked", "/Applications/Blocked.app"), at("ignored", "/Applications/Ignored.app"), current("current"),
            failedCheck("failing"), missing, makeApp({.label = "blockedmissing", .installed = nullptr})});
  tick();
  EXPECT_THAT(running(), ElementsAre(label("closed"), label("missing")));
  EXPECT_TRUE(says("Skipping label 'open' — /Applications/Open.app is currently running."));
  EXPECT_TRUE(says("Skipping label 'byid' — bundle ID org.sample.byidentifier is currently running."));
  EXPECT_TRUE(says("Skipping label 'nothing' — no appPath or packageID on file, cannot certify the app is closed."));
  EXPECT_TRUE(says("Patching 2 closed app(s): closed, missing"));
}

TEST_F(BackgroundPatchSchedulerTest, aRequestAnswersWhatBecameOfIt) {
  schedule({at("quill", "/Applications/Quill.app")});
  writeState({.currentRun = HelperBackgroundCurrentRun{.runID = "r", .startedAt = time.now() - 59min}});
  EXPECT_EQ(ask(), ClosedAppsOutcome::helperPassRunning);
  EXPECT_TRUE(says("Closed-app pass skipped — the helper's background pass is running and will handle closed apps."));
  advance(2min);
  setHelperAlive(false);
  model->refreshHelperState(false);
  EXPECT_EQ(ask(), ClosedAppsOutcome::notRun);
  setHelperAlive(true);
  model->refreshHelperState(false);
  processes.setReadable(false);
  EXPECT_EQ(ask(), ClosedAppsOutcome::notRun);
  EXPECT_TRUE(says("Could not enumerate running processes — skipping this pass"));
  EXPECT_EQ(helper.runsAsked, 0);
  processes.setReadable(true);
  EXPECT_EQ(ask(), ClosedAppsOutcome::succeeded) << "a record of more than an hour holds up nobody";
  completeCycle();
  model->refreshDeadlineDisplay();
  EXPECT_EQ(ask(), ClosedAppsOutcome::notRun);
  EXPECT_TRUE(says("Closed-app pass skipped — patching is complete for this cycle."));
}

TEST_F(BackgroundPatchSchedulerTest, aBroadcastAsksAsWellWithoutATimer) {
  set("BackgroundPatchClosedAppsScheduler", PlistValue("helperDaemon"));
  schedule({at("quill", "/Applications/Quill.app")});
  scheduler->start();
  scheduler->start();
  notifications.post(CorvaneClosedAppsPatchRequested());
  settle();
  EXPECT_EQ(helper.runsAsked, 1);
}

TEST_F(BackgroundPatchSchedulerTest, openOnesAreStagedWhenNothingIsClosed) {
  processes.open("/Applications/Quill.app");
  schedule({at("quill", "/Applications/Quill.app")});
  set("WorkflowStageUpdates", PlistValue(true));
  tick();
  EXPECT_TRUE(says("No closed apps require updates this tick."));
  EXPECT_THAT(running(), IsEmpty());
  EXPECT_THAT(helper.runs.front().alsoStageLabels, ElementsAre(label("quill")));
  EXPECT_EQ(preferences.readLastBackgroundPatchDate(), time.now());
}

TEST_F(BackgroundPatchSchedulerTest, theUserHearsOfTheBeginningAndTheEnd) {
  set("BackgroundPatchClosedAppsNotifyOnCompletion", PlistValue(true));
  schedule({at("a", "/A.app"), at("b", "/B.app"), at("c", "/C.app"), at("d", "/D.app")});
  const auto bodies = [&] {
    std::vector<std::string> all;
    for (const auto& notification : std::exchange(center.added, {})) all.push_back(notification.body);
    return all;
  };
  const auto run = [&](PatchRunAnswer end) {
    scheduler->tick();
    answerRun(std::move(end));
    while (!helper.discoveries.empty()) answer(failure("CRVHelper", 1, "no"));
  };
  run({.success = true, .message = "Updated 4 of 4.", .installedCount = 4});
  EXPECT_THAT(bodies(), ElementsAre("Updating The a, The b, The c and 1 more in the background…",
                                    "Updated 4 apps in the background."));
  run({.success = true, .message = "Updated 0 of 4.", .installedCount = 0});
  EXPECT_EQ(bodies().size(), 1U);
  EXPECT_TRUE(says("Pass finished with nothing installed; skipping the completion notification."));
  center.failure = Error{.domain = "t", .code = 1, .text = "refused"};
  run({.success = true, .message = "Updated 1 of 4.", .installedCount = 1});
  EXPECT_TRUE(says("Failed to deliver starting notification: refused"));
  EXPECT_TRUE(says("Failed to deliver completion notification: refused"));
}

TEST_F(BackgroundPatchSchedulerTest, asksForPermissionToNotifyOnce) {
  set("BackgroundPatchClosedAppsNotifyOnCompletion", PlistValue(true));
  schedule({});
  const auto outcome = [&](NotificationSettings settings, Result<bool> grant) {
    center.current = settings;
    center.grant = std::move(grant);
    center.requests.clear();
    log.clear();
    scheduler->start();
    settle();
    return center.requests;
  };
  using enum NotificationAuthorization;
  EXPECT_THAT(outcome({.authorization = notDetermined}, true),
              ElementsAre(NotificationOptions{.badge = true, .sound = true, .alert = true}));
  EXPECT_TRUE(says("Notification authorization granted for [alert, sound, badge]."));
  EXPECT_THAT(outcome({.authorization = authorized, .badge = NotificationSetting::disabled}, false),
              ElementsAre(NotificationOptions{.badge = true}));
  EXPECT_TRUE(says("Existing notification authorization is missing .badge (badgeSetting=1); extending…"));
  EXPECT_TRUE(says(".badge authorization denied."));
  EXPECT_THAT(outcome({.authorization = notDetermined}, failure("t", 1, "no bus")), ::testing::SizeIs(1));
  EXPECT_TRUE(says("Notification authorization request failed: no bus"));
  EXPECT_THAT(outcome({.authorization = denied}, true), IsEmpty());
  EXPECT_THAT(outcome({.authorization = authorized, .badge = NotificationSetting::enabled}, true), IsEmpty());
}

struct AtLoginPassTest : BackgroundPatchSchedulerTest {
  void logIn(Duration ago) {
    set("BackgroundPatchAtLogin", PlistValue(true));
    console.known = std::vector<ConsoleSession>{{.user = "ada", .loggedInAt = time.now() - ago}};
    schedule({at("quill", "/Applications/Quill.app")});
    scheduler->start();
  }
};

TEST_F(AtLoginPassTest, checksThenPatchesOnceASession) {
  logIn(1min);
  EXPECT_TRUE(
      says("Logged in at 2026-11-01T11:59:00+00:00; the at-login check and closed-app pass start once the "
           "helper is ready."));
  scheduler->start();
  advance(10s);
  EXPECT_TRUE(says("Running the at-login check for updates and closed-app pass."));
  ASSERT_EQ(helper.discoveries.size(), 1U);
  answer(Apps{at("quill", "/Applications/Quill.app")});
  EXPECT_THAT(running(), ElementsAre(label("quill")));
  BackgroundPatchScheduler relaunched(*model, background);
  log.clear();
  relaunched.start();
  EXPECT_FALSE(says("Logged in at"));
}

TEST_F(AtLoginPassTest, waitsForHelperPowerAndNetworkWithinItsTime) {
  setScript(false);
  set("BackgroundPatchClosedAppsRequireOnAC", PlistValue(true));
  power.onACPower = false;
  network.state.hasLink = false;
  logIn(1min);
  advance(10s + 60s);
  power.onACPower = true;
  advance(60s);
  setScript(true);
  advance(15s);
  EXPECT_EQ(network.probes, 1);
  network.state.hasLink = true;
  EXPECT_FALSE(says("Running the at-login check"));
  advance(30s);
  EXPECT_TRUE(says("Running the at-login check"));
}

TEST_F(AtLoginPassTest, givesUpWhenTheLoginIsTooFarBack) {
  network.state.hasLink = false;
  logIn(14min);
  advance(10min);
  EXPECT_EQ(log.count("The at-login pass did not start within 15 minutes of login; leaving it to the normal schedule."),
            1U);
  EXPECT_EQ(helper.discoveriesAsked, 0);
}

TEST_F(AtLoginPassTest, waitsALittleForWhoIsLoggedIn) {
  set("BackgroundPatchAtLogin", PlistValue(true));
  preferences.writePreference("BackgroundPatchAtLoginHandledSession", PlistValue("no date"));
  schedule({at("quill", "/Applications/Quill.app")});
  const std::vector<ConsoleSession> session{{.user = "ada", .loggedInAt = time.now()}};
  scheduler->start();
  advance(3s);
  EXPECT_FALSE(says("Logged in at"));
  console.known = session;
  advance(1s);
  EXPECT_TRUE(says("Logged in at"));

  console.known.reset();
  log.clear();
  BackgroundPatchScheduler untold(*model, background);
  untold.start();
  advance(AtLoginPass::kSessionsLook * AtLoginPass::kSessionsLooks);
  console.known = session;
  advance(1min);
  EXPECT_FALSE(says("Logged in at"));
}

}  // namespace
}  // namespace corvane
