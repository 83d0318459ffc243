#include "workflow/status_view_model.h"

#include "workflow_fixture.h"

namespace corvane {
namespace {

using StatusViewModelTest = WorkflowTest;

TEST_F(StatusViewModelTest, constructionLoadsAndTouchesNothing) {
  domains.setUser({{"IgnoredLabels", PlistArray{PlistValue("ignored")}},
                   {"HardDeferralDate", PlistValue(time.now() + 48h)},
                   {"DeadlineDaysHard", PlistValue(3)},
                   {"LastUpdateCheckDate", PlistValue(time.now() - 2h)}});
  preferences.writeDiscoveredApps({outdated("a"), outdated("ignored")});
  const auto before = domains.user().version;
  model = std::make_unique<StatusViewModel>(services);
  EXPECT_EQ(fields().inventory.apps.size(), 1U);
  EXPECT_EQ(fields().inventory.pendingUpdates, 1);
  EXPECT_EQ(fields().inventory.lastUpdateCheckDate, time.now() - 2h);
  EXPECT_EQ(fields().deferral.currentHardDeadlineDate, time.now() + 48h);
  EXPECT_EQ(fields().deferral.selectedDeferralMinutes, 60);
  EXPECT_TRUE(said("Loaded 1 previously discovered apps from preferences"));
  settle();
  EXPECT_EQ(domains.user().version, before) << "nothing is written";
  EXPECT_TRUE(application.badges.empty());
  EXPECT_TRUE(notices.updates.empty());
  EXPECT_EQ(time.timeToNext(), std::nullopt) << "nothing waits";

  model->begin();
  EXPECT_EQ(application.badge, "1");
  EXPECT_TRUE(said("Dock badge set to 1 (pendingUpdates=1, activationPolicy=regular)"));
  EXPECT_EQ(notices.updates, std::vector<std::string>{"0 of 1 open"});
  EXPECT_TRUE(fields().helper.helperOperational);
}

TEST_F(StatusViewModelTest, anEmptyStoreLeavesEverythingAtRest) {
  build();
  EXPECT_FALSE(log.holds("Loaded"));
  EXPECT_TRUE(application.badges.empty());
}

TEST_F(StatusViewModelTest, aCompleteCycleHoldsUpdatesForTheNextOne) {
  completeCycle();
  preferences.writeNextAutoLaunch(time.now() + 1h, false, false);
  buildWith({outdated("a"), outdated("b")});
  model->refreshDeadlineDisplay();
  EXPECT_EQ(fields().inventory.pendingUpdates, 0);
  EXPECT_EQ(fields().inventory.updatesAwaitingNextCycle, 2);
  EXPECT_EQ(application.badge, std::nullopt);
  EXPECT_EQ(model->statusLine(), "Patching is complete for this cycle");
  EXPECT_EQ(fields().inventory.cycleCompletionMessage,
            "Patching is complete for this cycle. The next cycle starts November 4, 2026.");
  EXPECT_EQ(preferences.readNextAutoLaunch(), std::nullopt) << "a finished cycle keeps no watchpoint";
  EXPECT_TRUE(model->promptableUpdateLabels().empty());
  EXPECT_EQ(model->actionableUpdateLabels().size(), 2U);
}

TEST_F(StatusViewModelTest, repeatedFailuresHoldALabelAndReachTheAlerts) {
  fail("a", 3);
  fail("b", 1);
  buildWith({outdated("a"), outdated("b"), outdated("c")});
  EXPECT_EQ(fields().inventory.pendingUpdates, 2);
  EXPECT_EQ(fields().inventory.alertCount, 2);
  EXPECT_EQ(model->promptableUpdateLabels(), (Labels{label("b"), label("c")}));
  ASSERT_TRUE(heldFailureRecord(label("a"), model->facts()));
  EXPECT_EQ(heldFailureRecord(label("a"), model->facts())->count, 3);
  EXPECT_EQ(model->receipts(label("a"), 2).size(), 2U);
  fail("c", 1);
  model->invalidateReceiptCaches();
  EXPECT_EQ(fields().inventory.alertCount, 3);
}

TEST_F(StatusViewModelTest, settingsAreTakenWithoutSettingAnythingOff) {
  buildWith({outdated("a"), outdated("b")});
  notices.updates.clear();
  preferences.writePreference("IgnoredLabels", std::vector<std::string>{"b"});
  preferences.writePreference("DeadlineDaysHard", std::int64_t{3});
  preferences.writePreference("HardDeferralDate", time.now() + 24h);
  notifications.post(CorvaneSettingsDidChange{});
  EXPECT_EQ(fields().inventory.apps.size(), 1U);
  EXPECT_EQ(preferences.readDiscoveredApps()->size(), 1U);
  EXPECT_EQ(application.badge, "1");
  EXPECT_TRUE(notices.updates.empty());
  EXPECT_EQ(fields().deferral.currentHardDeadlineDate, time.now() + 24h);
  EXPECT_TRUE(said("Hard deadline for display is now 2026-11-02T12:00:00+00:00."));
  preferences.deletePreference("DeadlineDaysHard");
  notifications.post(CorvaneSettingsDidChange{});
  EXPECT_TRUE(said("Hard deadline for display is now <none>."));
}

TEST_F(StatusViewModelTest, broadcastsReachTheirFlows) {
  buildWith({outdated("a")});
  const auto badges = application.badges.size();
  notifications.post(CorvaneDidBecomeActive{});
  EXPECT_EQ(application.badges.size(), badges + 1);
  notifications.post(ShowDeferralPromptFromNotification{});
  EXPECT_EQ(fields().deferral.deferralPromptHost, DeferralPromptHost::standalone);
  EXPECT_TRUE(fields().updateAll.userRecheckInFlight);
  EXPECT_TRUE(said("Received notification deep-link — invoking updateAll() to surface the deferral prompt."));
}

TEST_F(StatusViewModelTest, aPassOfTheHelperIsShownAndEnded) {
  buildWith({outdated("a")});
  notifications.post(CorvaneHelperPassStarted{.runID = "r1", .totalLabels = 2, .currentLabelDisplayName = "Quill"});
  EXPECT_TRUE(said("Received .corvaneHelperPassStarted (runID r1, totalLabels=2, currentLabel=<nil>)."));
  EXPECT_TRUE(fields().gate.isPatching);
  EXPECT_TRUE(fields().gate.helperPassOwnsPatchingState);
  EXPECT_EQ(status(), "Background patching Quill (1 of 2)…");
  EXPECT_EQ(model->statusLine(), "Background patching…");
  notifications.post(CorvaneHelperPassProgress{.totalLabels = 2, .completedCount = 1, .currentLabel = "b"});
  EXPECT_EQ(status(), "Background patching b (2 of 2)…");
  processes.add({.pid = 8, .executable = "/usr/bin/osascript"});
  advance(2s);
  EXPECT_EQ(status(), "Waiting for you to quit Quill…");
  notifications.post(CorvaneHelperPassProgress{.totalLabels = 2, .completedCount = 1, .currentLabel = "b"});
  EXPECT_EQ(status(), "Waiting for you to quit Quill…") << "the prompt's text stands while it is on screen";
  EXPECT_EQ(helper.progressAsked, 0) << "no run of ours is polled";
  notifications.post(CorvaneHelperPassEnded{.runID = "r1"});
  EXPECT_TRUE(model->isIdle());
  EXPECT_EQ(status(), "<none>");
  EXPECT_EQ(fields().blockingPrompt.blockingPromptAppName, std::nullopt);
}

TEST_F(StatusViewModelTest, aCompletedPassRefreshesItsLabels) {
  buildWith({outdated("a")});
  notifications.post(CorvaneHelperPassStarted{.runID = "r1", .totalLabels = 1, .currentLabel = "a"});
  notifications.post(CorvaneHelperPassCompleted{.labels = {label("a")}, .runID = "r1"});
  EXPECT_TRUE(said("Received .corvaneHelperPassCompleted (runID r1, labels: 1); refreshing."));
  EXPECT_EQ(fields().sideEffects.openAppsNotifyStageGeneration, 1);
  settle();
  EXPECT_EQ(helper.discoveries.back().labels, Labels{label("a")});
  EXPECT_FALSE(fields().gate.isPatching);
  answer(Apps{current("a")});
  notifications.post(CorvaneHelperPassCompleted{.runID = "r2"});
  EXPECT_EQ(helper.discoveriesAsked, 1);
}

TEST_F(StatusViewModelTest, aRunOfOursIsNotTakenForAPassUnlessItLooksLikeOne) {
  buildWith({outdated("a"), outdated("b")});
  model->startPatching({label("a")}, DiscoveryOperation::patchAll, {}, nullptr);
  notifications.post(CorvaneHelperPassStarted{.runID = "r1"});
  notifications.post(CorvaneHelperPassEnded{.runID = "r1"});
  EXPECT_TRUE(fields().gate.isPatching);
  EXPECT_EQ(fields().gate.currentOperation, DiscoveryOperation::patchAll);
  answerRun(PatchRunAnswer{.success = true});
  answer(Apps{current("a")});

  model->startBackgroundPatch({label("b")}, {}, nullptr);
  notifications.post(CorvaneHelperPassEnded{.runID = "r2"});
  EXPECT_FALSE(fields().gate.isPatching) << "the shown state ends, whoever started it";
  model->updateApp(outdated("b"));
  settle();
  EXPECT_EQ(helper.runs.size(), 1U) << "but the run is still out, so no second one starts";
  answerRun(PatchRunAnswer{.success = true});
  answer(Apps{current("b")});
  EXPECT_TRUE(model->isIdle());
}

TEST_F(StatusViewModelTest, aPassThatStartsDuringACheckLeavesBothFlags) {
  buildWith({current("a")});
  std::string order;
  model->checkForUpdates(Labels{label("a")});
  settle();
  notifications.post(CorvaneHelperPassStarted{.runID = "r1", .totalLabels = 1});
  EXPECT_TRUE(fields().gate.isLoading && fields().gate.isPatching);
  model->queueIdleWork([&] { order += "1"; });
  model->queueIdleWork([&] { order += "2"; });
  answer(Apps{current("a")});
  EXPECT_EQ(order, "");
  notifications.post(CorvaneHelperPassEnded{.runID = "r1"});
  settle();
  EXPECT_EQ(order, "12");
}

TEST_F(StatusViewModelTest, theHelpersStateIsReadAndTheFirstDiscoveryWaitsForTheTool) {
  setScript(false);
  build();
  EXPECT_TRUE(fields().helper.helperOperational);
  EXPECT_FALSE(fields().helper.installomatorAvailable);
  EXPECT_EQ(model->statusLine(), "Setup required");
  EXPECT_FALSE(preferences.readFirstRunSetupCompleted());
  model->checkForUpdates();
  setScript(true);
  model->refreshHelperState(false);
  EXPECT_TRUE(fields().helper.sawInstallomatorMissing) << "busy: a later refresh will see to it";
  answer(std::unexpected(XPCError::discovery("none")));
  model->refreshHelperState(true);
  EXPECT_TRUE(said("Installomator is now deployed and no apps are discovered; running discovery."));
  EXPECT_EQ(fields().gate.currentOperation, DiscoveryOperation::discoverInstalled);
  EXPECT_FALSE(fields().helper.sawInstallomatorMissing);
  EXPECT_EQ(log.count("StatusViewModel: First-run setup marked complete."), 1U);
  EXPECT_TRUE(preferences.readFirstRunSetupCompleted());
  advance(5s);
  setHelperAlive(false);
  model->refreshHelperState(false);
  EXPECT_FALSE(fields().helper.helperOperational);
}

TEST_F(StatusViewModelTest, dismissingThePromptHidesItAndItsReminders) {
  build();
  preferences.writeHardDeadlineDialogDismissedUntil(time.now() + 1h);
  model->dismissDeferralPrompt();
  EXPECT_EQ(preferences.readHardDeadlineDialogDismissedUntil(), std::nullopt);
  EXPECT_EQ(notices.remindersCancelled, 1);
  EXPECT_EQ(prompts.hidden, 1);
  EXPECT_FALSE(fields().deferral.showDeferralPrompt);
}

TEST_F(StatusViewModelTest, observersHearOnceATurnAndNoMoreOnceTheyLeave) {
  buildWith({current("a")});
  int told = 0;
  int toldToLeaver = 0;
  const auto stays = model->observe([&] { ++told; });
  Lease leaves = model->observe([&] {
    ++toldToLeaver;
    leaves.release();
  });
  model->checkForUpdates();
  EXPECT_EQ(told, 0) << "never within the call";
  settle();
  EXPECT_EQ(told, 1);
  answer(Apps{outdated("a")});
  EXPECT_EQ(told, 2);
  EXPECT_EQ(toldToLeaver, 1);
}

}  // namespace
}  // namespace corvane
