#include "workflow/discovery_pipeline.h"

#include "workflow_fixture.h"

namespace corvane {
namespace {

using Kind = ScriptedServiceClient::Kind;
const Error kOutOfReach{.domain = "CRVHelperChannel", .code = 2, .text = "connection refused"};

struct DiscoveryPipelineTest : WorkflowTest {
  [[nodiscard]] std::optional<Date> stored(std::string_view key) const { return preferences.readOptional<Date>(key); }
};

TEST_F(DiscoveryPipelineTest, theHelperCallFollowsWhatIsAsked) {
  const Labels filter{label("x"), label("y"), label("x")};
  const auto expectCall = [this](const Apps& known, DiscoveryRequest request, Kind kind, const Labels& labels) {
    buildWith(known);
    model->startDiscovery(std::move(request));
    settle();
    ASSERT_EQ(helper.discoveries.size(), 1U);
    EXPECT_EQ(helper.discoveries.back().kind, kind);
    EXPECT_EQ(helper.discoveries.back().labels, labels);
    helper.discoveries.back().done.abandon();
    helper.discoveries.clear();
  };
  const auto inventory = DiscoveryOperation::discoverInstalled;
  expectCall({current("a")}, {.operation = inventory}, Kind::installed, {});
  expectCall({}, {.operation = inventory, .labelsFilter = filter}, Kind::installed, {});
  expectCall({}, {.includeLatestVersions = true, .labelsFilter = filter}, Kind::forLabels, {label("x"), label("y")});
  expectCall({current("a")}, {.includeLatestVersions = true, .forceFullDiscovery = true}, Kind::withUpdates, {});
  const Apps two{current("a"), current("b")};
  expectCall(two, {.includeLatestVersions = true}, Kind::forLabels, {label("a"), label("b")});
  expectCall({}, {.includeLatestVersions = true}, Kind::withUpdates, {});
}

TEST_F(DiscoveryPipelineTest, aFullCheckTakesTheInventoryDatesAndSignal) {
  buildWith({unchecked("a"), unchecked("b")});
  rememberInventory();
  log.clear();
  model->checkForUpdates();
  EXPECT_TRUE(fields().discovery.updateCheckCoversAllApps && fields().gate.isLoading);
  EXPECT_EQ(status(), "Checking for updates for 2 applications (this may take a few minutes)...");
  settle();
  advance(3s);
  answer(Apps{outdated("a"), unchecked("b")});
  EXPECT_TRUE(model->isIdle());
  EXPECT_EQ(status(), "Check for Updates complete: 1 updates available, 0 up to date.");
  EXPECT_TRUE(fields().inventory.apps[1].updateCheckFailed) << "no version came, so its check failed";
  EXPECT_EQ(preferences.readDiscoveredApps(), fields().inventory.apps);
  for (const auto* key : {"LastDiscoveryDate", "LastUpdateCheckDate", "LastFullInventoryCheckDate"})
    EXPECT_EQ(stored(key), time.now()) << key;
  EXPECT_EQ(fields().inventory.lastUpdateCheckDate, time.now());
  EXPECT_EQ(display.lookedUp, 1);
  EXPECT_EQ(signals.sent, (std::vector<UsageSignal>{{.name = "Updates.checked", .parameters = {{"pending", "1"}}}}));
  for (const auto* line : {"Inventory unchanged since last discovery; using fast subset update check",
                           "Starting discovery (includeLatestVersions = true, labelsFilterCount = 0)...",
                           "Discovery successful via XPC, found 2 apps",
                           "Recorded full inventory check as the start of the DiscoveryFrequency interval.",
                           "Check for Updates summary - total apps: 2, apps with updates: 1 [a]"})
    EXPECT_TRUE(said(line)) << line;
}

TEST_F(DiscoveryPipelineTest, aScopedCheckMergesAndIsNoFullCheck) {
  buildWith({outdated("a"), current("b")});
  model->checkForUpdates({label("a"), label("a"), label("c")});
  EXPECT_FALSE(fields().discovery.updateCheckCoversAllApps);
  answer(Apps{current("a"), outdated("c")});
  EXPECT_EQ(fields().inventory.apps.size(), 3U);
  EXPECT_EQ(fields().inventory.pendingUpdates, 1);
  EXPECT_FALSE(stored("LastFullInventoryCheckDate"));
  EXPECT_TRUE(signals.sent.empty());
  model->checkForUpdates(Labels{});
  EXPECT_TRUE(said("checkForUpdates(forLabels:) called with empty label list; skipping."));
  EXPECT_EQ(helper.discoveriesAsked, 1);
}

TEST_F(DiscoveryPipelineTest, normalisingMarksOnlyRecordsThatWereToBeChecked) {
  auto mismatch = unchecked("mismatch");
  mismatch.teamIDMismatch = true;
  auto store = unchecked("store");
  store.macAppStoreManaged = true;
  store.updateCheckFailed = true;
  auto told = outdated("told");
  told.updateCheckFailed = true;
  buildWith({});
  checkFinds({mismatch, store, told, outdated("fine"), unchecked("none")});
  std::string failed;
  for (const auto& app : fields().inventory.apps)
    if (app.updateCheckFailed) failed += app.label.text + " ";
  EXPECT_EQ(failed, "told none ");
}

TEST_F(DiscoveryPipelineTest, settingsDropWhatTheHelperSends) {
  buildWith({});
  domains.setUser({{"IgnoredLabels", PlistArray{PlistValue("b"), PlistValue("c")}}});
  settle();
  model->discoverInstalledApps();
  answer(Apps{current("a"), current("b"), current("c")});
  EXPECT_EQ(fields().inventory.apps.size(), 1U);
  EXPECT_TRUE(said("Dropped b, c from the discovery result because the current settings exclude it."));
}

TEST_F(DiscoveryPipelineTest, anEmptyFilterAnswersWithTheCurrentAppsAsAFullCheck) {
  buildWith({outdated("a")});
  bool completed = false;
  model->startDiscovery(
      {.includeLatestVersions = true, .labelsFilter = Labels{}, .completion = [&] { completed = true; }});
  EXPECT_TRUE(fields().gate.isLoading);
  settle();
  EXPECT_TRUE(completed);
  EXPECT_EQ(helper.discoveriesAsked, 0);
  EXPECT_EQ(stored("LastFullInventoryCheckDate"), time.now());
  EXPECT_TRUE(said("labelsFilter is empty; returning current apps without contacting helper."));
}

TEST_F(DiscoveryPipelineTest, ofTwoPassesTheNewerAnswersAndTheOlderWaiterIsReleasedAtItsEnd) {
  buildWith({current("a")});
  std::string order;
  model->startDiscovery({.includeLatestVersions = true, .completion = [&] { order += "old "; }});
  model->startDiscovery({.includeLatestVersions = true, .completion = [&] { order += "new "; }});
  answer(Apps{outdated("a"), outdated("b")}, 0);
  EXPECT_EQ(fields().inventory.apps.size(), 1U);
  EXPECT_TRUE(fields().gate.isLoading);
  EXPECT_EQ(order, "");
  EXPECT_TRUE(said("Discarding discovery result from superseded pass 1 (current is 2)."));
  answer(Apps{current("a")}, 0);
  EXPECT_EQ(order, "new old ");
  EXPECT_FALSE(fields().gate.isLoading);
}

TEST_F(DiscoveryPipelineTest, whatTheCountsSetOffKeepsTheGateAndTheContinuationWaits) {
  buildWith({current("a")});
  bool continued = false;
  notices.onUpdates = [this] {
    notices.onUpdates = nullptr;
    model->startBackgroundPatch({label("a")}, {}, nullptr);
  };
  model->startDiscovery({.includeLatestVersions = true, .completion = [&] {
                           continued = true;
                           EXPECT_TRUE(model->isIdle());
                         }});
  answer(Apps{outdated("a")});
  EXPECT_EQ(fields().gate.currentOperation, DiscoveryOperation::patchBackground);
  EXPECT_FALSE(continued);
  answerRun(PatchRunAnswer{.success = true, .message = "Updated 1 of 1.", .installedCount = 1});
  answer(Apps{current("a")});
  EXPECT_TRUE(continued);

  notices.onUpdates = [this] {
    notices.onUpdates = nullptr;
    model->checkForUpdates(Labels{label("a")});
  };
  model->checkForUpdates(Labels{label("a")});
  answer(Apps{outdated("a")});
  EXPECT_TRUE(fields().gate.isLoading) << "the pass that the counts started is still out";
  answer(Apps{current("a")});
  EXPECT_TRUE(model->isIdle());
}

TEST_F(DiscoveryPipelineTest, anInventoryChainsACheckWhenHelperAndToolAreThere) {
  for (const bool ready : {true, false}) {
    SCOPED_TRACE(ready);
    domains.setUser({});
    notices.updates.clear();
    setScript(ready);
    build();
    log.clear();
    model->discoverInstalledApps();
    EXPECT_EQ(status(), "Discovering installed applications...");
    answer(Apps{unchecked("a"), unchecked("b")});
    EXPECT_EQ(said("Discovery complete; chaining Check for Updates so version state is populated."), ready);
    EXPECT_EQ(fields().gate.isLoading, ready);
    EXPECT_EQ(helper.discoveries.size(), ready ? 1U : 0U);
    EXPECT_EQ(fields().inventory.lastUpdateCheckDate, std::nullopt);
    EXPECT_TRUE(notices.updates.empty()) << "an inventory alone sets nothing off";
    EXPECT_EQ(status() == "Discovery complete: found 2 applications. Checking for updates…", !ready);
    while (!helper.discoveries.empty()) answer(Apps{});
  }
}

TEST_F(DiscoveryPipelineTest, theFingerprintDecidesBetweenFullAndFast) {
  buildWith({current("a")});
  const auto check = [this](Kind kind, const char* line) {
    log.clear();
    model->checkForUpdates();
    settle();
    EXPECT_EQ(helper.discoveries.back().kind, kind) << line;
    EXPECT_TRUE(said(line)) << line;
    answer(Apps{current("a")});
  };
  check(Kind::withUpdates, "No prior inventory fingerprint; running full discovery before update check");
  check(Kind::forLabels, "Inventory unchanged since last discovery; using fast subset update check");
  writeBundle("Quill", "1.0");
  check(Kind::withUpdates,
        "Inventory fingerprint changed since last discovery; running full discovery before update "
        "check");
  preferences.writeDiscoveredApps({current("corvane")});
  build();
  check(Kind::withUpdates,
        "A saved app is bound to the other Corvane label; running full discovery so corvane4 can "
        "claim it.");
}

TEST_F(DiscoveryPipelineTest, aSlowCheckGetsAWordAt90SecondsAndGoesOn) {
  buildWith({current("a")});
  model->checkForUpdates();
  advance(89s);
  EXPECT_FALSE(log.holds("taking longer than expected"));
  advance(1s);
  EXPECT_TRUE(said("Check for Updates is taking longer than expected but is still running"));
  EXPECT_EQ(status(),
            "Check for Updates is taking longer than usual. You can keep this window open while we finish checking.");
  answer(Apps{current("a")});
  EXPECT_TRUE(model->isIdle());
  advance(200s);
  EXPECT_EQ(log.count("taking longer than expected"), 1U);

  model->startDiscovery({.includeLatestVersions = true, .operation = DiscoveryOperation::patchAll});
  advance(90s);
  EXPECT_EQ(log.count("taking longer than expected"), 2U);
  EXPECT_EQ(status(), "Updating applications...") << "a recheck before patching keeps its text";
}

TEST_F(DiscoveryPipelineTest, aSilentHelperIsReplacedByTheDirectScanAfter15Seconds) {
  writeLabel("quill");
  writeBundle("quill", "1.0");
  build();
  model->discoverInstalledApps();
  advance(14s);
  EXPECT_EQ(fields().discovery.discoveryGeneration, 1);
  setHelperAlive(true);
  time.advance(1s);
  for (const auto* line : {"XPC timeout, falling back to direct discovery (no latest-version checks)",
                           "Starting direct discovery (bypassing XPC, includeLatestVersions = false)...",
                           "Direct discovery successful, found 1 apps",
                           "Direct discovery complete; chaining Check for Updates so version state is populated."})
    EXPECT_TRUE(said(line)) << line;
  ASSERT_EQ(fields().inventory.apps.size(), 1U);
  EXPECT_EQ(fields().inventory.apps[0].currentVersion, "1.0");
  answer(Apps{current("late")}, 0);
  EXPECT_EQ(fields().inventory.apps[0].label, label("quill")) << "the late answer is of a superseded pass";
  EXPECT_TRUE(fields().gate.isLoading);
}

TEST_F(DiscoveryPipelineTest, failuresFollowTheirKind) {
  struct Row {
    bool latest;
    Error error;
    const char* shown;
    bool scans;
  };
  const Row rows[] = {
      {false, XPCError::discovery("no labels"), "Discovery failed: no labels", false},
      {true, XPCError::discovery("no labels"), "Discovery failed: no labels", false},
      {true, kOutOfReach,
       "Check for Updates requires the helper service and it could not be contacted (connection refused).", false},
      {false, kOutOfReach, "<none>", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.shown);
    buildWith({current("a")});
    log.clear();
    int completed = 0;
    model->startDiscovery({.includeLatestVersions = row.latest,
                           .operation = DiscoveryOperation::discoverInstalled,
                           .completion = [&] { ++completed; }});
    answer(std::unexpected(row.error));
    EXPECT_TRUE(said("XPC discovery failed: " + row.error.text));
    EXPECT_EQ(said("Falling back to direct discovery (no latest-version checks)"), row.scans);
    EXPECT_EQ(completed, row.scans ? 0 : 1);
    if (row.scans) continue;
    EXPECT_EQ(error(), row.shown);
    EXPECT_EQ(fields().inventory.apps.size(), 1U) << "the old inventory stands";
    EXPECT_TRUE(model->isIdle());
  }
}

TEST_F(DiscoveryPipelineTest, aDirectScanThatFailsEmptiesTheInventory) {
  buildWith({current("a")});
  writeLabel("quill");
  std::filesystem::remove_all(places.root / "Applications");
  std::ofstream(places.root / "Applications") << "a file, not a folder";
  model->discoverInstalledApps();
  answer(std::unexpected(kOutOfReach));
  EXPECT_TRUE(said("Direct discovery failed: Discovery failed: "));
  EXPECT_THAT(error(), StartsWith("Discovery failed: "));
  EXPECT_EQ(status(), "<none>");
  EXPECT_TRUE(fields().inventory.apps.empty());
  EXPECT_TRUE(model->isIdle());
}

TEST_F(DiscoveryPipelineTest, anEmptyAnswerIsExplained) {
  const auto explained = [this] {
    model->discoverInstalledApps();
    answer(Apps{});
    EXPECT_TRUE(model->isIdle());
    return status() == "<none>"  ? error() == "<none>" ? "not" : "as an error"
           : error() == "<none>" ? "calmly"
                                 : "twice";
  };
  build();
  EXPECT_STREQ(explained(), "as an error") << "no script and no labels";
  writeLabel("quill");
  EXPECT_STREQ(explained(), "calmly");
  domains.setUser({{"IgnoredLabels", PlistArray{PlistValue("*")}}});
  writeBundle("quill", "1.0");
  settle();
  (void)explained();
  EXPECT_TRUE(
      said("Empty discovery finished — 1 installed app(s) with matching labels excluded by administrator policy."));
}

TEST_F(DiscoveryPipelineTest, theHelpersOwnInventoryIsTakenWithoutTouchingTheGate) {
  build();
  notifications.post(CorvaneScheduledDiscoveryCompleted{.runID = "r1"});
  EXPECT_TRUE(said("Scheduled discovery completed but helper-discovered-apps.json was missing or unreadable."));
  ASSERT_TRUE(files.makeFolders(places.supportFolder()));
  ASSERT_TRUE(scheduledApps.write({outdated("a"), current("b")}));
  model->checkForUpdates();
  const auto generation = fields().discovery.discoveryGeneration;
  notifications.post(CorvaneScheduledDiscoveryCompleted{.runID = "r2"});
  EXPECT_TRUE(said("Received .corvaneScheduledDiscoveryCompleted (runID r2); applying inventory-only refresh."));
  EXPECT_TRUE(
      said("Applied helper scheduled-discovery inventory (2 app(s)); notify/dialog suppressed until NextAutoLaunch."));
  EXPECT_EQ(fields().inventory.pendingUpdates, 1);
  EXPECT_TRUE(notices.updates.empty());
  EXPECT_EQ(fields().inventory.lastUpdateCheckDate, time.now());
  EXPECT_TRUE(fields().discovery.discoveryGeneration == generation && fields().gate.isLoading);
}

TEST_F(DiscoveryPipelineTest, forcedRechecksTestTheGate) {
  auto failed = unchecked("a");
  buildWith({current("b")});
  model->forceRecheckAllAlerts();
  EXPECT_EQ(status(), "No alerts to re-check.");
  model->forceRecheck(Label());
  EXPECT_EQ(helper.discoveriesAsked, 0);
  model->checkForUpdates(Labels{label("a")});
  model->forceRecheck(label("b"));
  EXPECT_TRUE(said("Skipping force re-check — another operation is running."));
  answer(Apps{failed});
  model->forceRecheckAllAlerts();
  EXPECT_TRUE(said("Force re-check requested for 1 Alert label(s)."));
  model->forceRecheckAllAlerts();
  EXPECT_TRUE(said("Skipping force re-check (all) — another operation is running."));
  settle();
  EXPECT_EQ(helper.discoveries.back().labels, Labels{label("a")});
  answer(Apps{current("a")});
  model->forceRecheck(label("a"));
  EXPECT_TRUE(said("Force re-check requested for label a."));
}

TEST_F(DiscoveryPipelineTest, theFirstLoadDiscoversOnlyWhereNothingEverWas) {
  build();
  model->loadStatus();
  EXPECT_TRUE(said("No lastDiscoveryDate found; performing initial automatic discovery"));
  EXPECT_EQ(fields().gate.currentOperation, DiscoveryOperation::discoverInstalled);
  EXPECT_EQ(helper.statuses.size(), 1U);
  settle();
  model->loadStatus();
  EXPECT_EQ(helper.statuses.size(), 1U) << "busy: only the helper's state is read";

  buildWith({current("a")});
  model->loadStatus();
  EXPECT_TRUE(said("Skipping automatic discovery; lastDiscoveryDate exists"));
  helper.statuses.back()(std::unexpected(kOutOfReach));
  helper.statuses.pop_back();
  EXPECT_TRUE(said("Initial getStatus failed: connection refused"));
}

TEST_F(DiscoveryPipelineTest, anAnswerToAModelThatIsGoneIsALineInTheLog) {
  build();
  model->discoverInstalledApps();
  settle();
  model.reset();
  helper.answerDiscovery(Apps{current("a")});
  time.advance(200s);
  EXPECT_TRUE(said("Self is nil in completion handler"));
}

}  // namespace
}  // namespace corvane
