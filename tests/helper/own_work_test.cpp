#include "helper/own_work_fixture.h"

namespace corvane {
namespace {

TEST_F(OwnWorkFixture, APassPatchesWhatIsClosedAndTellsOfEachStep) {
  processes.open(bundle("stamp"));
  label("tern", "1.0", "2.0");
  plays["tern"] = {"", {.exit = ChildExit{.code = 8}, .takes = 1min}};
  start();
  machine.advance(kFirstOwnWork - 1s);
  EXPECT_EQ(network.probes, 0);
  machine.advance(30s);
  const auto run = told().currentRun;
  ASSERT_TRUE(run);
  EXPECT_EQ(std::tuple(run->totalLabels, run->currentLabel, run->currentLabelDisplayName),
            std::tuple(2, "quill", "quill"));
  machine.advance(1min);
  EXPECT_EQ(told().currentRun->completedCount, 1);
  EXPECT_EQ(told().currentRun->currentLabel, "tern");
  machine.advance(2min);
  const auto summary = told().lastBackgroundPatchSummary;
  ASSERT_TRUE(summary);
  EXPECT_FALSE(told().currentRun);
  EXPECT_EQ(summary->runID, run->runID);
  EXPECT_EQ(summary->labels, (Labels{Label("quill"), Label("tern")}));
  EXPECT_EQ(std::tuple(summary->totalLabels, summary->patchedCount, summary->failureCount, summary->hasFailures),
            std::tuple(2, 1, 1, true));
  EXPECT_EQ(installed("quill"), "2.0");
  EXPECT_EQ(installed("stamp"), "1.0") << "its user works with it";
  EXPECT_EQ(receipts.readAllReceipts().size(), 2U);
  EXPECT_EQ(children.started().front().arguments.back(), "BLOCKING_PROCESS_ACTION=silent_fail") << "nobody is asked";
}

TEST_F(OwnWorkFixture, PassesComeEveryIntervalAndTheNextHelperKeepsTheBeat) {
  start();
  machine.advance(kFirstOwnWork + kMinute);
  EXPECT_EQ(network.probes, 1);
  machine.advance(3h);
  EXPECT_EQ(network.probes, 1);
  machine.advance(1h);
  EXPECT_EQ(network.probes, 2) << "also with nothing to do";
  EXPECT_TRUE(log.holds("No closed apps require updates this tick."));
  EXPECT_EQ(told().lastBackgroundPatchSummary->patchedCount, 2) << "which leaves the last summary as it is";
  work.reset();
  machine.advance(1h);
  start();
  machine.advance(2h);
  EXPECT_EQ(network.probes, 2);
  machine.advance(1h + 10min);
  EXPECT_EQ(network.probes, 3);
}

TEST_F(OwnWorkFixture, ASleepingMachineCatchesUpAndAClockSetBackDoesNotStopThePasses) {
  start();
  machine.advance(kFirstOwnWork + 5min);
  machine.suspend(9h);
  machine.advance(kMinute);
  EXPECT_EQ(network.probes, 2);
  machine.setWallClock(machine.now() - 100h);
  machine.advance(4h + kMinute);
  EXPECT_EQ(network.probes, 3);
}

TEST_F(OwnWorkFixture, ASettingThatChangesCountsWithinAMinute) {
  setting.config.backgroundPatchClosedAppsEnabled = false;
  start();
  machine.advance(24h);
  EXPECT_EQ(network.probes, 0);
  setting.config.backgroundPatchClosedAppsEnabled = true;
  machine.advance(kMinute + kFirstOwnWork + kMinute);
  EXPECT_EQ(network.probes, 1);
  setting.config.backgroundPatchClosedAppsScheduler = BackgroundPatchSchedulerMode::inApp;
  machine.advance(24h);
  EXPECT_EQ(network.probes, 1);
}

TEST_F(OwnWorkFixture, EachGateSkipsTheTick) {
  const auto skips = [this](const char* line) {
    log.clear();
    machine.advance(4h + kMinute);
    EXPECT_TRUE(log.holds(line)) << line;
    EXPECT_TRUE(children.started().empty()) << line;
  };
  setting.config.backgroundPatchClosedAppsRequireOnAC = true;
  power.onACPower = false;
  start();
  skips("on battery");
  power.onACPower = true;
  preferences.writePatchingCadenceState({.currentPatchingStartDate = machine.now() - 24h,
                                         .lastPatchingCompletionDate = machine.now() - 1h,
                                         .nextCycleStartDate = machine.now() + 6 * 24h});
  skips("patching is complete for this cycle");
  preferences.writePatchingCadenceState({});
  network.state.hasLink = false;
  skips("No internet / captive portal detected");
  network.state.hasLink = true;
  processes.setReadable(false);
  skips("Could not enumerate running processes");
  processes.setReadable(true);
  machine.advance(4h + kMinute);
  EXPECT_EQ(children.started().size(), 2U);
}

TEST_F(OwnWorkFixture, WhatWasOpenedMeanwhileIsLeftOutAtTheLastMoment) {
  start();
  machine.advance(kFirstOwnWork + 30s);
  ASSERT_EQ(children.running(), 1U);
  processes.open("/elsewhere/Stamp.app");
  processes.open(bundle("stamp"));
  machine.advance(5min);
  EXPECT_EQ(installed("stamp"), "1.0");
  EXPECT_EQ(told().lastBackgroundPatchSummary->patchedCount, 1);
  EXPECT_FALSE(told().lastBackgroundPatchSummary->hasFailures);
  EXPECT_EQ(receipts.readAllReceipts().size(), 1U) << "the tool was not run for it";
  EXPECT_TRUE(log.holds("stamp: left out: " + bundle("stamp") + " is currently running."));
}

TEST_F(OwnWorkFixture, UnpluggingEndsThePassBehindTheLabelInHand) {
  setting.config.backgroundPatchClosedAppsRequireOnAC = true;
  start();
  machine.advance(kFirstOwnWork + 30s);
  power.onACPower = false;
  machine.advance(5min);
  EXPECT_EQ(children.started().size(), 1U);
  EXPECT_EQ(told().lastBackgroundPatchSummary->patchedCount, 1);
}

TEST_F(OwnWorkFixture, ItsRunGoesBeforeAllThatWaitAndBehindTheOneInHand) {
  std::string order;
  onChild = [&](const ChildSpec& spec) {
    order += spec.arguments.at(0) + " ";
    return ScriptedChild{.takes = 10min};
  };
  for (const char* name : {"first", "second"}) label(name, "1.0", "2.0");
  setting.config.backgroundPatchClosedAppsBlockList = {"first", "second", "stamp"};
  const auto ask = [&](const char* name) {
    desk.ask({.labels = {Label(name)}, .alsoStageLabels = {}}, [](const Result<PatchRunAnswer>&) {});
  };
  start();
  machine.advance(kFirstOwnWork - 1s);
  ask("first");
  ask("second");
  machine.advance(2min);
  EXPECT_FALSE(told().currentRun) << "its turn has not come";
  machine.advance(9min);
  EXPECT_EQ(told().currentRun->currentLabel, "quill");
  machine.advance(30min);
  EXPECT_EQ(order, "first quill second ");
}

TEST_F(OwnWorkFixture, WhatIsClosedIsStagedBeforeThePassAndWhatIsOpenBehindIt) {
  setting.config.workflowStageUpdates = true;
  processes.open(bundle("stamp"));
  std::string order;
  onChild = [&](const ChildSpec& spec) {
    const bool stages = std::ranges::count(spec.arguments, "DEBUG=1") == 1;
    order += (stages ? "(" : "") + spec.arguments.at(0) + (stages ? ") " : " ");
    return ScriptedChild{.takes = 1min};
  };
  start();
  machine.advance(kFirstOwnWork + 30s);
  ASSERT_TRUE(told().currentRun) << "the downloads are part of the pass";
  EXPECT_EQ(told().currentRun->currentLabelDisplayName, "quill");
  machine.advance(10min);
  EXPECT_EQ(order, "(quill) quill (stamp) ");
}

TEST_F(OwnWorkFixture, ARunThatCannotBeginIsAPassThatFailed) {
  chmod(setting.constants.supportFolder().c_str(), 0777);
  start();
  machine.advance(kFirstOwnWork + kMinute);
  const auto summary = told().lastBackgroundPatchSummary;
  ASSERT_TRUE(summary);
  EXPECT_EQ(std::tuple(summary->patchedCount, summary->failureCount, summary->hasFailures), std::tuple(0, 2, true));
}

TEST_F(OwnWorkFixture, APassThatIsCutOffLeavesNoSummaryAndIsMadeUpFor) {
  start();
  machine.advance(kFirstOwnWork + 30s);
  ASSERT_TRUE(told().currentRun);
  work->stop();
  desk.stop();
  machine.advance(1min);
  EXPECT_EQ(told(), HelperPatchState{});
  EXPECT_FALSE(state.lastPassConcludedAt());
}

TEST_F(OwnWorkFixture, TheScheduledDiscoveryWritesBothFilesOnceAnInterval) {
  setting.config.backgroundPatchClosedAppsEnabled = false;
  setting.config.discoveryFrequency = DiscoveryFrequency::daily;
  label("current", "2.0", "2.0");
  start();
  machine.advance(kFirstOwnWork + kMinute);
  const auto first = told().lastScheduledDiscoverySummary;
  ASSERT_TRUE(first);
  EXPECT_EQ(std::tuple(first->appCount, first->pendingUpdateCount), std::tuple(3, 2));
  const auto apps = HelperScheduledDiscoveryAppsStore(kApps, files, log).read();
  ASSERT_TRUE(apps);
  EXPECT_EQ(appWith(*apps, Label("quill"))->newVersion, "2.0");
  EXPECT_TRUE(children.started().empty()) << "nothing is installed";
  machine.advance(23h);
  EXPECT_EQ(told().lastScheduledDiscoverySummary, first);
  domains.setUser({{"LastFullInventoryCheckDate", machine.now()}});
  machine.advance(23h);
  EXPECT_EQ(told().lastScheduledDiscoverySummary, first) << "the application has checked everything meanwhile";
  machine.advance(1h + 2 * kMinute);
  EXPECT_NE(told().lastScheduledDiscoverySummary->runID, first->runID);
}

TEST_F(OwnWorkFixture, ADiscoveryThatFoundNoNetworkIsTriedAgainInAnHour) {
  setting.config.backgroundPatchClosedAppsEnabled = false;
  setting.config.discoveryFrequency = DiscoveryFrequency::weekly;
  network.state = {.hasLink = true, .captivePortal = true};
  start();
  machine.advance(kFirstOwnWork + 10min);
  EXPECT_EQ(network.probes, 1);
  EXPECT_FALSE(told().lastScheduledDiscoverySummary) << "behind a portal";
  network.state.captivePortal = false;
  machine.advance(1h);
  EXPECT_TRUE(told().lastScheduledDiscoverySummary);
}

TEST_F(OwnWorkFixture, WithoutALabelCatalogueNoEmptyInventoryIsPublished) {
  setting.config.discoveryFrequency = DiscoveryFrequency::daily;
  setting.config.backgroundPatchClosedAppsEnabled = false;
  std::filesystem::remove_all(setting.constants.labelsFolder());
  start();
  machine.advance(3h);
  EXPECT_FALSE(files.exists(kApps));
}

TEST_F(OwnWorkFixture, OneCheckServesThePassAndTheDiscovery) {
  setting.config.discoveryFrequency = DiscoveryFrequency::daily;
  start();
  machine.advance(kFirstOwnWork + 10min);
  EXPECT_EQ(network.probes, 1);
  EXPECT_TRUE(told().lastScheduledDiscoverySummary);
  EXPECT_TRUE(told().lastBackgroundPatchSummary);
}

}  // namespace
}  // namespace corvane
