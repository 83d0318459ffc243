// What pending updates set off: downloads, closed applications, and what the user hears of the open ones.
#include "workflow/pending_update_side_effects.h"

#include "workflow_fixture.h"

namespace corvane {
namespace {

using Gate = OpenAppsNotificationGate;
using Lines = std::vector<std::string>;

std::string pathOf(const char* name) { return std::string("/Applications/") + name + ".app"; }

struct SideEffectsTest : WorkflowTest {
  SideEffectsTest() {
    manage({{"WorkflowStageUpdates", PlistValue(true)}, {"BackgroundPatchClosedAppsEnabled", PlistValue(true)}});
  }
  static AppInfo pending(const char* name) {
    auto app = outdated(name);
    app.appPath = pathOf(name);
    return app;
  }
  pid_t open(const char* name) { return processes.open(pathOf(name)); }

  void start(
      const Apps& apps, const std::function<void()>& before = [] {}) {
    preferences.writeDiscoveredApps(apps);
    preferences.writePreference("LastDiscoveryDate", time.now() - 24h);
    model = std::make_unique<StatusViewModel>(services);
    model->setClosedAppsPatcher(&patcher);
    before();
    model->begin();
    settle();
  }
  void startWithoutStaging(const Apps& apps, bool onACOnly = false) {
    manage({{"BackgroundPatchClosedAppsEnabled", PlistValue(true)},
            {"BackgroundPatchClosedAppsRequireOnAC", PlistValue(onACOnly)}});
    start(apps);
  }
  void staged() { answerRun(PatchRunAnswer{.success = true}); }
  void stagingFails() { answerRun(failure(XPCError::domain, 2, "no room")); }
  void passEnds(ClosedAppsOutcome outcome) {
    patcher.waiting(outcome);
    settle();
  }
  // Of the unanswered requests that only download, what each is about.
  [[nodiscard]] Lines stagings() const {
    Lines all;
    for (const auto& run : helper.runs)
      if (run.labels.empty()) all.push_back(joined(run.alsoStageLabels));
    return all;
  }
  [[nodiscard]] const SideEffectFields& state() const { return fields().sideEffects; }
};

TEST_F(SideEffectsTest, theClosedOnesAreDownloadedAndPatchedBeforeTheUserHearsOfTheOpenOnes) {
  open("b");
  start({pending("a"), pending("b")});
  EXPECT_EQ(stagings(), Lines{"a, b"});
  EXPECT_EQ(status(), "Staging updates…");
  EXPECT_TRUE(said("Staging 2 update(s) before closed-app patching and the deferral."));
  EXPECT_EQ(patcher.asked, 0);
  staged();
  EXPECT_EQ(status(), "<none>");
  EXPECT_EQ(state().openAppsNotificationGate, Gate::patchingClosedApps);
  EXPECT_TRUE(said("Patching closed apps before the open-apps notification."));

  model->startBackgroundPatch({label("a")}, {},
                              [this](bool, const auto&, auto) { patcher.waiting(ClosedAppsOutcome::succeeded); });
  model->recomputeCounts();
  answerRun(PatchRunAnswer{.success = true, .message = "Updated 1 of 1.", .installedCount = 1});
  EXPECT_EQ(state().openAppsNotificationGate, Gate::refreshThenNotify);
  EXPECT_TRUE(notices.updates.empty()) << "nothing is told before the refresh";

  answer(Apps{current("a")});
  EXPECT_TRUE(said("Closed-app pass finished; delivering the deferral."));
  EXPECT_EQ(notices.updates, Lines{"1 of 1 open"});
  EXPECT_TRUE(said("1 open app(s) need updates — presenting the deferral dialog."));
  answer(Apps{pending("b")});
  EXPECT_TRUE(fields().deferral.showDeferralPrompt);
  EXPECT_EQ(fields().deferral.deferralPromptHost, DeferralPromptHost::standalone);
  EXPECT_EQ(fields().updateAll.pendingPatchLabels, Labels{label("b")});
  EXPECT_EQ(patcher.asked, 1);
  EXPECT_TRUE(helper.runs.empty());
}

TEST_F(SideEffectsTest, aRequestForTheSameLabelsIsNotRepeatedAndOneForOthersSupersedesIt) {
  start({pending("a")});
  model->recomputeCounts();
  EXPECT_EQ(stagings(), Lines{"a"});
  checkFinds({pending("a"), pending("b")});
  EXPECT_EQ(stagings(), (Lines{"a", "a, b"}));
  EXPECT_EQ(status(), "Staging updates…") << "the check leaves the ending to the side effects";
  staged();
  EXPECT_EQ(state().labelsStagedBeforeDeferral, std::nullopt) << "the older answer is dropped";
  EXPECT_TRUE(state().openAppsNotifyStageLabels);
  EXPECT_EQ(patcher.asked, 0);
  staged();
  EXPECT_EQ(state().labelsStagedBeforeDeferral, (LabelSet{label("a"), label("b")}));
  EXPECT_EQ(patcher.asked, 1);
}

TEST_F(SideEffectsTest, whatIsDownloadedIsNotDownloadedAgainUntilAPassOfTheHelperEnds) {
  manage({{"WorkflowStageUpdates", PlistValue(true)}});
  start({pending("a"), pending("b")});
  staged();
  checkFinds({pending("a")});
  EXPECT_TRUE(stagings().empty());
  notifications.post(CorvaneHelperPassCompleted{.runID = "r1"});
  model->recomputeCounts();
  EXPECT_EQ(stagings(), Lines{"a"});
  notifications.post(CorvaneHelperPassCompleted{.runID = "r2"});
  const auto told = notices.updates.size();
  staged();
  EXPECT_EQ(state().labelsStagedBeforeDeferral, std::nullopt);
  EXPECT_EQ(notices.updates.size(), told) << "the answer of before the pass goes nowhere";
}

TEST_F(SideEffectsTest, aFailedDownloadCostsTheDownloadAlone) {
  open("a");
  start({pending("a")});
  stagingFails();
  EXPECT_TRUE(said("Staging before the deferral failed: no room. Continuing."));
  EXPECT_TRUE(said("Staging 1 update(s) before the open-apps notification."));
  EXPECT_EQ(stagings(), Lines{"a"}) << "tried once more before somebody is told";
  model->recomputeCounts();
  EXPECT_EQ(stagings().size(), 1U);
  EXPECT_TRUE(notices.updates.empty());
  answerRun(PatchRunAnswer{.success = false, .message = "Failed: a"});
  EXPECT_TRUE(said("Staging before the open-apps notification failed: Failed: a. Notifying anyway."));
  EXPECT_EQ(notices.updates, Lines{"1 of 1 open"});
  EXPECT_TRUE(fields().updateAll.userRecheckInFlight);
}

TEST_F(SideEffectsTest, aPassOfTheHelperWhileADownloadWaitedIsFollowedByARecheck) {
  const auto helperPassedAt = [this](Date when) {
    ASSERT_TRUE(files.makeFolders(places.supportFolder()));
    ASSERT_TRUE(
        helperState.write({.lastBackgroundPatchSummary = BackgroundPatchSummary{.runID = "r1", .completedAt = when}}));
  };
  start({pending("a"), pending("b")});
  helperPassedAt(time.now() - 1s);
  staged();
  EXPECT_EQ(helper.discoveriesAsked, 0) << "it ended before";
  EXPECT_EQ(patcher.asked, 1);
  passEnds(ClosedAppsOutcome::notRun);

  checkFinds({pending("a"), pending("c")});
  helperPassedAt(time.now() + 1s);
  advance(2s);
  staged();
  EXPECT_TRUE(
      said("The helper finished a background pass while staging waited. Rechecking 2 label(s) before closed-app "
           "patching and the deferral."));
  EXPECT_EQ(helper.discoveries.back().labels, (Labels{label("a"), label("c")}));
  EXPECT_EQ(patcher.asked, 1);
  answer(Apps{current("a"), pending("c")});
  EXPECT_EQ(patcher.asked, 2) << "with what the recheck found";
}

TEST_F(SideEffectsTest, aPassOverTheSameClosedOnesIsNotRepeatedUntilItsAttemptIsForgotten) {
  const auto count = [this] {
    model->recomputeCounts();
    if (patcher.waiting) passEnds(ClosedAppsOutcome::notRun);
    return patcher.asked;
  };
  startWithoutStaging({pending("b"), pending("a")});
  passEnds(ClosedAppsOutcome::failed);
  EXPECT_TRUE(said("Closed-app pass did not refresh the list; delivering the deferral."));
  EXPECT_EQ(count(), 1);
  EXPECT_TRUE(said("Not retrying the closed-app pass that already ran for a, b. Delivering the deferral."));
  const auto c = open("c");
  checkFinds({pending("a"), pending("b"), pending("c")});
  EXPECT_EQ(patcher.asked, 1) << "an open one more changes nothing";
  answer(Apps{pending("a"), pending("b"), pending("c")});
  processes.end(c);
  EXPECT_EQ(count(), 2);
  EXPECT_EQ(count(), 2);
  model->deferUpdates(false);
  EXPECT_EQ(count(), 3);
  model->recordSuccessfulPatchRun(time.now() - 240h);  // of an earlier cycle
  EXPECT_EQ(count(), 4);
}

TEST_F(SideEffectsTest, aPassWaitsForAnIdleGate) {
  open("b");
  startWithoutStaging({current("a"), pending("b")});
  answer(Apps{pending("b")});
  model->dismissDeferralPrompt();
  model->startPatching({label("b")}, DiscoveryOperation::patchSingle, {}, nullptr);
  ASSERT_TRUE(files.makeFolders(places.supportFolder()));
  ASSERT_TRUE(scheduledApps.write({pending("a"), pending("b")}));
  notifications.post(CorvaneScheduledDiscoveryCompleted{.runID = "r1"});
  model->recomputeCounts();
  EXPECT_EQ(patcher.asked, 0);
  EXPECT_EQ(state().closedAppsAttemptedBeforeDeferral, std::nullopt);
  answerRun(PatchRunAnswer{.success = true});
  answer(Apps{current("b")});
  EXPECT_EQ(patcher.asked, 1);
}

TEST_F(SideEffectsTest, howAPassEndedDecidesWhatIsTold) {
  struct Case {
    ClosedAppsOutcome outcome;
    const char* told;
  };
  for (const auto& one :
       {Case{ClosedAppsOutcome::helperPassRunning, "1 of 2 open, closed elsewhere"},
        Case{ClosedAppsOutcome::notRun, "1 of 2 open, closed wait"}, Case{ClosedAppsOutcome::succeeded, "1 of 2 open"},
        Case{ClosedAppsOutcome::failed, "1 of 2 open"}}) {
    SCOPED_TRACE(one.told);
    model.reset();
    notices.updates.clear();
    power.onACPower = true;
    processes.set({});
    open("b");
    int requests = 0;
    const auto requested = notifications.observe<CorvaneClosedAppsPatchRequested>([&](const auto&) { ++requests; });
    startWithoutStaging({pending("a"), pending("b")}, true);
    EXPECT_EQ(state().openAppsNotificationGate, Gate::patchingClosedApps);
    power.onACPower = false;
    passEnds(one.outcome);
    EXPECT_EQ(notices.updates, Lines{one.told});
    EXPECT_EQ(state().openAppsNotificationGate, Gate::idle);
    EXPECT_EQ(requests + helper.runsAsked, 0) << "this process has a patcher, and nothing is staged";
  }
  notices.updates.clear();
  patcher.asked = 0;
  model.reset();
  processes.set({});
  startWithoutStaging({pending("a")}, true);  // on battery
  EXPECT_EQ(patcher.asked, 0);
  EXPECT_EQ(notices.updates, Lines{"0 of 1 open, closed wait"});
}

TEST_F(SideEffectsTest, aPatcherThatRefusesWithinTheCallDoesNotCutIntoTheFlowThatCounted) {
  patcher.onAsked = [] { return ClosedAppsOutcome::notRun; };
  startWithoutStaging({pending("a")});
  model->deferUpdates(false);
  notices.updates.clear();
  model->recomputeCounts();
  EXPECT_EQ(patcher.asked, 2);
  EXPECT_TRUE(notices.updates.empty());
  settle();
  EXPECT_EQ(notices.updates, Lines{"0 of 1 open"});
}

TEST_F(SideEffectsTest, aRefreshThatFailsDeliversAllTheSame) {
  startWithoutStaging({pending("a")});
  model->checkForUpdates(Labels{label("a")});
  passEnds(ClosedAppsOutcome::failed);
  EXPECT_EQ(state().openAppsNotificationGate, Gate::refreshThenNotify);
  answer(failure(XPCError::domain, 2, "gone"));
  EXPECT_TRUE(said("Post-patch refresh failed; delivering the deferral."));
  EXPECT_EQ(notices.updates, Lines{"0 of 1 open"});
  EXPECT_EQ(state().openAppsNotificationGate, Gate::idle);
}

TEST_F(SideEffectsTest, withoutAPatcherAnotherProcessIsAskedOnceTheGateIsIdle) {
  int requests = 0;
  const auto requested = notifications.observe<CorvaneClosedAppsPatchRequested>([&](const auto&) { ++requests; });
  manage({{"BackgroundPatchClosedAppsEnabled", PlistValue(true)}});
  buildWith({pending("a")});
  EXPECT_EQ(notices.updates, Lines{"0 of 1 open, closed elsewhere"});
  EXPECT_EQ(requests, 1);
  model->checkForUpdates();
  model->recomputeCounts();
  EXPECT_EQ(notices.updates.size(), 2U);
  EXPECT_EQ(requests, 1);
}

TEST_F(SideEffectsTest, aCompleteCycleSetsNothingOff) {
  open("b");
  completeCycle();
  start({pending("a"), pending("b")}, [this] { model->refreshDeadlineDisplay(); });
  EXPECT_EQ(helper.runsAsked + helper.discoveriesAsked + patcher.asked, 0);
  EXPECT_EQ(notices.updates, Lines{"0 of 0 open"});
}

TEST_F(SideEffectsTest, theDialogComesOnceForEachRise) {
  manage({});
  open("a");
  open("b");
  buildWith({pending("a")});
  answer(Apps{pending("a")});
  ASSERT_TRUE(fields().deferral.showDeferralPrompt);
  model->closeDeferralPrompt();
  checkFinds({pending("a")});
  EXPECT_TRUE(model->isIdle()) << "the user knows of this one";
  checkFinds({pending("a"), pending("b")});
  EXPECT_TRUE(said("2 open app(s) need updates — presenting the deferral dialog."));
  answer(Apps{pending("a"), pending("b")});
  EXPECT_EQ(fields().deferral.deferralPromptGeneration, 2);
}

TEST_F(SideEffectsTest, focusDefersBeforeAnybodyIsToldAndSaysSoWhereItIsWanted) {
  for (const bool wanted : {false, true}) {
    SCOPED_TRACE(wanted);
    model.reset();
    domains.setUser({});
    notices.told.clear();
    notices.updates.clear();
    manage({{"DeadlineCountFocus", PlistValue(3)}, {"FocusDeferralNotificationsEnabled", PlistValue(wanted)}});
    focus.disturbed = true;
    open("a");
    buildWith({pending("a")});
    EXPECT_TRUE(said("Pending updates found while Focus is active; armed an automatic focus deferral."));
    EXPECT_TRUE(said("Skipping the open-apps notification during an automatic focus deferral."));
    EXPECT_EQ(notices.told, wanted ? Lines{"ended, 1 pending"} : Lines());
    EXPECT_TRUE(notices.updates.empty());
    EXPECT_TRUE(preferences.readAutomaticFocusDeferralArmed());
  }
}

TEST_F(SideEffectsTest, focusIsNotAskedAboutWhatOthersPatchNorDuringARecheckOfTheUser) {
  manage({{"DeadlineCountFocus", PlistValue(3)}, {"BackgroundPatchClosedAppsEnabled", PlistValue(true)}});
  focus.disturbed = true;
  buildWith({pending("a")});
  EXPECT_EQ(notices.updates, Lines{"0 of 1 open, closed elsewhere"});
  manage({{"DeadlineCountFocus", PlistValue(3)}});
  model->updateAll(DeferralPromptHost::dashboard);
  answer(Apps{pending("a")});
  EXPECT_TRUE(fields().deferral.showDeferralPrompt);
  model->recomputeCounts();
  EXPECT_EQ(preferences.readNextAutoLaunch(), std::nullopt);
}

TEST_F(SideEffectsTest, aFocusThatBeginsDuringTheDownloadHidesTheDialog) {
  manage({{"WorkflowStageUpdates", PlistValue(true)}, {"DeadlineCountFocus", PlistValue(3)}});
  open("a");
  start({pending("a")});
  stagingFails();
  focus.disturbed = true;
  stagingFails();
  EXPECT_TRUE(said("1 open app(s) need updates, but an automatic focus deferral is hiding the dialog."));
  EXPECT_EQ(notices.updates, Lines{"1 of 1 open"});
  EXPECT_TRUE(model->isIdle());
}

TEST_F(SideEffectsTest, whatIsDueIsDecidedFromEveryFact) {
  using Change = void (*)(NewsFacts&);
  const auto with = [](Change change) {
    NewsFacts facts{
        .open = 2, .notified = 1, .now = VirtualMachine::kStart, .stageUpdates = true, .notificationsEnabled = true};
    change(facts);
    return std::pair(shouldStageBeforeNotification(facts), shouldPresentDeferralDialog(facts));
  };
  using Due = std::pair<bool, bool>;  // the download, the dialog
  EXPECT_EQ(with([](NewsFacts&) {}), Due(true, true));
  EXPECT_EQ(with([](NewsFacts& f) { f.open = f.notified = 0; }), Due(false, false));
  EXPECT_EQ(with([](NewsFacts& f) { f.notified = 2; }), Due(false, false));
  EXPECT_EQ(with([](NewsFacts& f) { f.stageUpdates = false; }), Due(false, true));
  EXPECT_EQ(with([](NewsFacts& f) { f.allStaged = true; }), Due(false, true));
  EXPECT_EQ(with([](NewsFacts& f) { f.notificationsEnabled = false; }), Due(false, true));
  EXPECT_EQ(with([](NewsFacts& f) { f.isActive = true; }), Due(false, true));
  EXPECT_EQ(with([](NewsFacts& f) { f.showsPrompt = true; }), Due(true, false));
  EXPECT_EQ(with([](NewsFacts& f) { f.cycleComplete = true; }), Due(true, false));
  EXPECT_EQ(with([](NewsFacts& f) { f.armed = f.now + 1s; }), Due(true, false));
  EXPECT_EQ(with([](NewsFacts& f) { f.armed = f.now; }), Due(true, true)) << "due is not ahead";
}

TEST_F(SideEffectsTest, aDownloadByRequestNeedsLabelsAndAnIdleGateAndSetsNoField) {
  manage({});
  buildWith({pending("a")});
  model->stageDetectedUpdates({label(""), label("")});
  EXPECT_EQ(helper.runsAsked, 0);
  model->stageDetectedUpdates({label("b"), label(""), label("a"), label("b")});
  EXPECT_EQ(stagings(), Lines{"b, a"});
  EXPECT_TRUE(said("Staging 2 detected update(s) with no closed apps to patch."));
  EXPECT_TRUE(model->isIdle());
  EXPECT_EQ(state().openAppsNotifyStageLabels, std::nullopt);
  stagingFails();
  EXPECT_TRUE(said("Staging request failed: no room"));
  EXPECT_EQ(error(), "<none>");
  model->checkForUpdates();
  model->stageDetectedUpdates({label("a")});
  EXPECT_EQ(helper.runsAsked, 1);
}

TEST_F(SideEffectsTest, aModelThatHasNotBegunSetsNothingOff) {
  open("b");
  preferences.writeDiscoveredApps({pending("a"), pending("b")});
  registration.current = HelperStatus::enabled;
  (void)files.remove(places.helperHeartbeat());
  model = std::make_unique<StatusViewModel>(services);
  model->setClosedAppsPatcher(&patcher);
  model->refreshHelperState(true);
  checkFinds({pending("a"), pending("b")});
  EXPECT_TRUE(model->isIdle());
  EXPECT_EQ(helper.runsAsked + patcher.asked, 0);
  EXPECT_TRUE(notices.updates.empty());
  EXPECT_EQ(registration.unregistered, 0);
}

}  // namespace
}  // namespace corvane
