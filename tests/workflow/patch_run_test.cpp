#include "workflow/patch_run.h"

#include "workflow_fixture.h"

namespace corvane {
namespace {

const PatchRunAnswer kWell{.success = true, .message = "Updated 1 of 1.", .installedCount = 1};

struct Ended {
  int times = 0;
  bool success = false;
  std::string message;
  std::int64_t installed = 0;
};

struct PatchRunTest : WorkflowTest {
  PatchCompletion into(Ended& ended) {
    return [&ended](bool success, const std::string& message, std::int64_t installed) {
      ended = {.times = ended.times + 1, .success = success, .message = message, .installed = installed};
    };
  }
  void start(const Labels& labels, DiscoveryOperation operation = DiscoveryOperation::patchAll) {
    model->startPatching(labels, operation, {}, into(ended));
    settle();
  }
  Ended ended;
};

TEST_F(PatchRunTest, aStartShowsTheRunAndRecordsItsEvents) {
  buildWith({outdated("a"), outdated("b")});
  domains.setUser({});
  model->startPatching({label("a"), label("b")}, DiscoveryOperation::patchAll, {label("c")}, nullptr);
  settle();
  EXPECT_TRUE(said("Starting patch for 2 app(s) (operation: patchAll)"));
  EXPECT_TRUE(fields().gate.isPatching);
  EXPECT_EQ(fields().gate.currentOperation, DiscoveryOperation::patchAll);
  EXPECT_EQ(status(), "Updating The a (1 of 2)…");
  EXPECT_EQ(fields().patch.progress, (PatchProgress{.operation = DiscoveryOperation::patchAll,
                                                    .labels = {label("a"), label("b")},
                                                    .currentLabel = label("a"),
                                                    .done = 0,
                                                    .total = 2}));
  ASSERT_EQ(helper.runs.size(), 1U);
  EXPECT_EQ(helper.runs.front().alsoStageLabels, Labels{label("c")});
  const auto events = model->deferralEvents(label("b"), 5);
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].eventType, DeferralEventType::installationStarted);
  EXPECT_EQ(events[0].appName, "The b");
  EXPECT_EQ(events[0].deferralMinutes, std::nullopt);
}

TEST_F(PatchRunTest, anEventThatCannotBeWrittenStopsNoRun) {
  buildWith({outdated("a")});
  files.failPath(deferralEvents.file(), 28);
  start({label("a")});
  EXPECT_TRUE(said("Could not write deferral event for a: "));
  EXPECT_EQ(helper.runs.size(), 1U);
}

TEST_F(PatchRunTest, guardedStartsRefuseWhileSomethingRuns) {
  buildWith({outdated("a"), outdated("b"), current("c")});
  model->startBackgroundPatch({}, {}, into(ended));
  EXPECT_EQ(ended.times, 1);
  EXPECT_TRUE(ended.success);
  EXPECT_TRUE(model->isIdle());
  model->updateApp(current("c"));
  EXPECT_TRUE(said("Ignoring Update request for app without a known update: c"));
  model->updateApp(outdated("a"));
  EXPECT_EQ(fields().gate.currentOperation, DiscoveryOperation::patchSingle);
  model->updateApp(outdated("b"));
  EXPECT_TRUE(said("Ignoring Update for b — another operation is running."));
  model->startBackgroundPatch({label("b")}, {}, into(ended));
  EXPECT_TRUE(said("Skipping background patch — another operation is already running"));
  EXPECT_FALSE(ended.success);
  EXPECT_EQ(ended.message, "Another operation is already running");
  EXPECT_EQ(helper.runsAsked, 1);
}

TEST_F(PatchRunTest, progressIsAskedForEveryTwoSecondsUntilTheRunEnds) {
  buildWith({outdated("a"), outdated("b")});
  start({label("a"), label("b")});
  advance(1999ms);
  EXPECT_EQ(helper.progressAsked, 0);
  helper.progress = {.isActive = true, .currentLabel = "b", .completedCount = 1, .totalLabels = 2};
  advance(1ms);
  EXPECT_EQ(helper.progressAsked, 1);
  EXPECT_EQ(status(), "Updating The b (2 of 2)…");
  EXPECT_EQ(fields().patch.progress->currentLabel, label("b"));
  EXPECT_EQ(fields().patch.progress->done, 1);
  const std::pair<PatchProgressInfo, const char*> answers[] = {
      {{.isActive = false, .currentLabel = "a", .totalLabels = 2}, "Updating The b (2 of 2)…"},
      {{.isActive = true, .currentLabel = "a", .totalLabels = 0}, "Updating The b (2 of 2)…"},
      {{.isActive = true, .currentLabel = "", .totalLabels = 2}, "Updating application (1 of 2)…"},
      {{.isActive = true, .currentLabel = "zed", .totalLabels = 2}, "Updating zed (1 of 2)…"}};
  for (const auto& [info, text] : answers) {
    helper.progress = info;
    advance(2s);
    EXPECT_EQ(status(), text);
  }
  answerRun(kWell);
  answer(Apps{current("a")});
  advance(60s);
  EXPECT_EQ(helper.progressAsked, 5);
  EXPECT_EQ(fields().patch.progress, std::nullopt);
}

TEST_F(PatchRunTest, aBackgroundRunIsWordedAndSignalledAsOne) {
  buildWith({outdated("a")});
  model->startBackgroundPatch({label("a")}, {}, into(ended));
  EXPECT_EQ(status(), "Background patching The a…");
  helper.progress = {.isActive = true, .currentLabel = "a", .completedCount = 0, .totalLabels = 1};
  advance(2s);
  EXPECT_EQ(status(), "Background patching The a (1 of 1)…");
  answerRun(kWell);
  ASSERT_NE(signals.find("Corvane.Patching.Background.completed"), nullptr);
  EXPECT_EQ(signals.find("Corvane.Patching.Background.completed")->floatValue, 1.0);
}

TEST_F(PatchRunTest, aFullSuccessClosesTheCycleAndRechecks) {
  buildWith({outdated("a"), current("b")});
  preferences.writePreference("HardDeferralCount", std::int64_t{2});
  preferences.writeLastHardDeadlineFiredAt(time.now());
  start({label("a")});
  answerRun(PatchRunAnswer{.success = true, .message = "Updated 0 of 1.", .installedCount = 0});
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 0);
  EXPECT_EQ(preferences.readLastHardDeadlineFiredAt(), std::nullopt);
  EXPECT_EQ(preferences.readPatchingCadenceState().lastPatchingCompletionDate, time.now());
  EXPECT_EQ(signals.find("Corvane.Patching.completed"), nullptr) << "nothing was installed";
  ASSERT_NE(signals.find("Patch.finished"), nullptr);
  EXPECT_EQ(signals.find("Patch.finished")->parameters,
            (std::vector<std::pair<std::string, std::string>>{
                {"operation", "patchAll"}, {"outcome", "success"}, {"labels", "1"}}));
  EXPECT_EQ(helper.discoveries.back().labels, Labels{label("a")});
  EXPECT_EQ(ended.times, 1);
  EXPECT_TRUE(ended.success);
  answer(Apps{current("a")});
  EXPECT_TRUE(model->isIdle());
}

TEST_F(PatchRunTest, aSuccessWithMorePendingLeavesTheCycleOpen) {
  buildWith({outdated("a"), outdated("b"), outdated("c")});
  preferences.writePreference("HardDeferralCount", std::int64_t{2});
  start({label("a"), label("b")});
  answerRun(PatchRunAnswer{.success = true, .message = "Updated 2 of 2.", .installedCount = 2});
  EXPECT_TRUE(
      said("Patched 2 label(s), but other apps still have updates pending — leaving the deferral cycle and any active "
           "deadline in place."));
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 2);
  EXPECT_EQ(preferences.readPatchingCadenceState().lastPatchingCompletionDate, std::nullopt);
}

TEST_F(PatchRunTest, whatTheUserDeclinedLeavesTheCycleOpenAndIsAskedForAgain) {
  preferences.writePreference("WorkflowUpdateAllErrorCompletesPatching", true);
  buildWith({outdated("a"), outdated("b")});
  const auto runs = [&](DiscoveryOperation operation) {
    preferences.clearNextAutoLaunch();
    start({label("a"), label("b")}, operation);
    time.advance(90s);
    (void)receipts.append({.label = label("b"), .timestamp = time.now(), .status = PatchingStatus::skipped});
    answerRun(PatchRunAnswer{.success = true, .message = "Updated 1 of 2. Skipped: b.", .installedCount = 1});
    EXPECT_TRUE(said("Skipped b — leaving the deferral cycle"));
    EXPECT_EQ(preferences.readPatchingCadenceState().lastPatchingCompletionDate, std::nullopt);
    answer(Apps{current("a"), outdated("b")});
  };
  runs(DiscoveryOperation::patchAll);
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 1h);
  EXPECT_TRUE(preferences.readPatchErrorRetryArmed());
  runs(DiscoveryOperation::patchBackground);
  EXPECT_EQ(preferences.readNextAutoLaunch(), std::nullopt);

  time.advance(1h);
  start({label("a"), label("b")});
  answerRun(kWell);
  EXPECT_EQ(preferences.readPatchingCadenceState().lastPatchingCompletionDate, time.now());
}

TEST_F(PatchRunTest, failuresFollowTheirTable) {
  struct Row {
    const char* name;
    DiscoveryOperation operation;
    bool completes;
    Result<PatchRunAnswer> answer;
    const char* error;
    bool retryArmed;
    bool cycleComplete;
    LabelSet cleared;
  };
  const Result<PatchRunAnswer> failed =
      PatchRunAnswer{.success = false, .message = "Updated 1 of 2. Failed: quill", .installedCount = 1};
  const Result<PatchRunAnswer> gone = failure("CRVHelperChannel", 2, "connection lost");
  using enum DiscoveryOperation;
  const char* lost = "Failed to start patching: connection lost";
  const char* named = "Updated 1 of 2. Failed: The quill";
  const Row rows[] = {
      {"connection, retry", patchAll, false, gone, lost, true, false, {}},
      {"connection, single", patchSingle, false, gone, lost, false, false, {}},
      {"all, retry", patchAll, false, failed, named, true, false, {}},
      {"all, marked complete", patchAll, true, failed, named, false, true, {Label("quill")}},
      {"single", patchSingle, true, failed, named, false, false, {}},
      {"background", patchBackground, true, failed, named, false, false, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    model.reset();
    log.clear();
    signals.sent.clear();
    domains.setUser({{"HardDeferralCount", PlistValue(1)}});
    manage({{"WorkflowUpdateAllErrorCompletesPatching", PlistValue(row.completes)},
            {"DeferralTimerError", PlistValue(45)}});
    auto a = outdated("quill");
    buildWith({a});
    start({label("quill"), label("gone")}, row.operation);
    helper.answerRun(row.answer);
    settle();
    EXPECT_EQ(helper.discoveries.back().labels, (Labels{label("quill"), label("gone")})) << "the labels are rechecked";
    EXPECT_EQ(error(), row.error);
    EXPECT_EQ(ended.success, false);
    EXPECT_EQ(ended.message, row.answer ? row.answer->message : row.error);
    EXPECT_EQ(preferences.readPatchErrorRetryArmed(), row.retryArmed);
    EXPECT_EQ(preferences.readNextAutoLaunch(),
              row.retryArmed ? std::optional<Date>(time.now() + 45min) : std::nullopt);
    EXPECT_EQ(fields().inventory.cycleCompletionMessage.has_value(), row.cycleComplete);
    EXPECT_EQ(preferences.readUpdateAllErrorClearedLabels(), row.cleared);
    EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 1) << "counters are kept";
    EXPECT_EQ(signals.find("Patch.finished") != nullptr, row.answer.has_value());
    EXPECT_EQ(said("Update All finished with errors; next attempt at "), row.retryArmed);
    EXPECT_EQ(said("Cleared failed Update All label(s) from the queue until the next cycle: quill."),
              row.cycleComplete);
    EXPECT_EQ(said("Update All finished with errors; WorkflowUpdateAllErrorCompletesPatching is true, so this cadence "
                   "is marked complete."),
              row.cycleComplete);
    while (!helper.discoveries.empty()) answer(Apps{a});
    EXPECT_TRUE(model->isIdle() && error() == "<none>");
  }
}

TEST_F(PatchRunTest, anOpenCycleWithNothingLeftIsClosed) {
  buildWith({current("a")});
  EXPECT_FALSE(model->completeSatisfiedDeferralCycleIfNeeded()) << "nothing was deferred";
  preferences.writePreference("HardDeferralCount", std::int64_t{2});
  model->checkForUpdates(Labels{label("a")});
  EXPECT_FALSE(model->completeSatisfiedDeferralCycleIfNeeded()) << "busy";
  answer(Apps{unchecked("a")});
  EXPECT_FALSE(model->completeSatisfiedDeferralCycleIfNeeded()) << "an inconclusive check";
  model->checkForUpdates(Labels{label("a")});
  answer(Apps{current("a")});
  EXPECT_TRUE(model->completeSatisfiedDeferralCycleIfNeeded());
  EXPECT_TRUE(
      said("No pending updates remain for the open deferral cycle (FocusDeferralCount=0, HardDeferralCount=2) — "
           "completing the patching cycle."));
  EXPECT_TRUE(fields().inventory.cycleCompletionMessage);
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 0);
}

TEST_F(PatchRunTest, thePromptOnScreenIsRaisedAtOnceAndThenEvery15Seconds) {
  processes.add({.pid = 7, .executable = "/usr/bin/osascript"});
  buildWith({outdated("a"), outdated("b")});
  start({label("a"), label("b")});
  advance(2s);
  EXPECT_EQ(fields().blockingPrompt.blockingPromptAppName, std::nullopt) << "it ran before";
  processes.add({.pid = 8, .executable = "/usr/bin/osascript"});
  advance(2s);
  EXPECT_EQ(processes.raised(), std::vector<pid_t>{8});
  EXPECT_EQ(status(), "Waiting for you to quit The a…");
  EXPECT_EQ(model->statusLine(), "Waiting for you to quit The a…");
  // The scripted machine brings it to the front; the person puts it behind again.
  processes.set({{.pid = 7, .executable = "/usr/bin/osascript"}, {.pid = 8, .executable = "/usr/bin/osascript"}});
  advance(14s);
  EXPECT_EQ(processes.raised().size(), 1U);
  helper.progress = {.isActive = true, .currentLabel = "b", .completedCount = 1, .totalLabels = 2};
  advance(2s);
  EXPECT_EQ(processes.raised().size(), 2U);
  EXPECT_EQ(status(), "Waiting for you to quit The b…") << "the next label renames the wait";
  EXPECT_EQ(log.count("Installomator's prompt is on screen."), 2U);
  processes.set({});
  advance(2s);
  EXPECT_EQ(fields().blockingPrompt.blockingPromptAppName, std::nullopt);
  answerRun(kWell);
  processes.add({.pid = 9, .executable = "/usr/bin/osascript"});
  answer(Apps{current("a")});
  advance(10s);
  EXPECT_EQ(processes.raised().size(), 2U) << "no run, no watch";
}

TEST_F(PatchRunTest, aPromptInFrontIsNeverRaisedAndLogsOnce) {
  buildWith({outdated("a")});
  start({label("a")});
  processes.set({{.pid = 8, .executable = "/usr/bin/osascript", .active = true}});
  advance(30s);
  EXPECT_TRUE(processes.raised().empty());
  EXPECT_EQ(log.count("StatusViewModel: Waiting for you to quit The a. Installomator's prompt is on screen."), 1U);
  processes.setReadable(false);
  advance(2s);
  EXPECT_EQ(fields().blockingPrompt.blockingPromptAppName, std::nullopt);
}

}  // namespace
}  // namespace corvane
