// Whole runs on a small tree: the tool is scripted, time is virtual, bundles and fragments are real files.
#include "helper/patch_runner.h"

#include <cerrno>

#include "core/client/helper_messages.h"
#include "core/policies/label_history.h"
#include "helper/runner_fixture.h"

namespace corvane {
namespace {

struct PatchRunnerFixture : RunnerFixture {
  std::optional<Result<PatchRunAnswer>> answer;

  void run(const std::vector<std::string>& names) {
    answer.reset();
    Labels labels;
    for (const auto& name : names) labels.emplace_back(name);
    runner.run({.labels = labels}, [this](const RunReport& ended) { answer = answerOf(ended); });
  }
  void runToEnd(const std::vector<std::string>& names) {
    run(names);
    machine.advance(toolTimeLimit(setting.config) * 2);
    ASSERT_TRUE(answer);
  }
};

TEST_F(PatchRunnerFixture, EachEndOfTheToolLeavesItsReceiptAndItsAnswer) {
  const PatchRunAnswer updated{true, "Updated 1 of 1.", 1};
  const PatchRunAnswer failedAnswer{false, "Updated 0 of 1. Failed: app.", 0};
  const auto ended = [](int code) { return ScriptedChild{.exit = ChildExit{.code = code}, .takes = 1s}; };
  const ScriptedChild forbidden{.exit = failure("CRVChildProcess", EACCES, "no leave")};
  const std::tuple<const char*, std::string, ScriptedChild, PatchingStatus, int, PatchRunAnswer> rows[] = {
      {"installed", "2.0", ended(0), PatchingStatus::success, 0, updated},
      {"claimed, but unchanged", "", ended(0), PatchingStatus::failure, -1, failedAnswer},
      {"declined by the user", "", ended(10), PatchingStatus::skipped, 10, {true, "Updated 0 of 1. Skipped: app.", 0}},
      {"cannot be started", "", forbidden, PatchingStatus::failure, 126, failedAnswer},
      {"hangs", "", {.takes = 3h}, PatchingStatus::failure, 128 + 15, failedAnswer},
  };
  std::size_t written = 0;
  for (const auto& [what, installs, child, status, code, expected] : rows) {
    label("app", "1.0", "2.0");
    plays["app"] = {installs, child};
    runToEnd({"app"});
    EXPECT_EQ(answer->value(), expected) << what;
    ASSERT_EQ(receipts.readAllReceipts().size(), ++written) << what;
    machine.advance(1s);
    const auto receipt = receipts.readAllReceipts().front();
    EXPECT_EQ(receipt.status, status) << what;
    EXPECT_EQ(receipt.installomatorExitCode, code) << what;
    EXPECT_EQ(receipt.targetVersion, "2.0") << what;
    EXPECT_EQ(receipt.version, installs.empty() ? "1.0" : installs) << what;
    EXPECT_FALSE(files.exists(kRecord)) << what;
  }
}

TEST_F(PatchRunnerFixture, WhatCannotBeReadAgainIsNotTakenForMissingAndHoldsNothing) {
  const auto labels = setting.constants.labelsFolder();
  const struct {
    const char* what;
    std::function<void()> meanwhile;
    const char* reason;
  } rows[] = {
      {"the catalogue cannot be read",
       [&] {
         std::filesystem::remove_all(labels);
         folder.write(below(labels), "no folder");
       },
       "Not a directory"},
      {"the label has left the catalogue", [&] { std::filesystem::remove(labels / "app.sh"); }, "leave the label out"},
      {"the settings leave it out by now", [&] { setting.config.ignoredLabels = {"app"}; }, "leave the label out"},
  };
  for (const auto& row : rows) {
    if (!std::filesystem::is_directory(labels)) std::filesystem::remove(labels);
    setting.config.ignoredLabels = {};
    label("app", "1.0", "2.0");
    plays["app"] = {"2.0", {.takes = 10s}};
    log.clear();
    run({"app"});
    machine.advance(5s);
    row.meanwhile();
    machine.advance(1min);
    ASSERT_TRUE(answer) << row.what;
    EXPECT_EQ(answer->value(), (PatchRunAnswer{false, "Updated 0 of 1. Failed: app.", 0})) << row.what;
    const auto receipt = receipts.readAllReceipts().front();
    EXPECT_EQ(receipt.installomatorExitCode, -2) << row.what;
    EXPECT_FALSE(receipt.version) << row.what;
    EXPECT_TRUE(log.holds("app: what is installed now could not be read")) << row.what;
    EXPECT_TRUE(log.holds(row.reason)) << row.what;
  }
  const auto all = receipts.readAllReceipts();
  ASSERT_EQ(all.size(), 3U);
  EXPECT_TRUE(LabelFailureHistory::failureRecords(all).empty()) << "three in a row put no label aside";
}

TEST_F(PatchRunnerFixture, ALabelIsJudgedByTheSettingsThatItWasBegunWith) {
  label("app", "1.0", "2.0");
  plays["app"] = {"2.1", {.takes = 10s}};
  run({"app"});
  machine.advance(5s);
  setting.config.versionComparisonMethod = VersionComparisonMethod::equalTo;
  machine.advance(1min);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->value(), (PatchRunAnswer{true, "Updated 1 of 1.", 1}));
}

TEST_F(PatchRunnerFixture, TheToolIsAskedOnlyWhereItMustBe) {
  label("current", "2.0", "2.0");
  label("newer", "3.0", "2.0");
  label("missing", "", "1.0");
  label("old", "1.9", "1.10");
  setting.config.requiredLabels = {"missing"};
  for (const char* name : {"missing", "old"}) plays[name] = {"1.10", {}};
  runToEnd({"current", "newer", "nosuch", "missing", "old"});
  EXPECT_EQ(answer->value(), (PatchRunAnswer{false, "Updated 2 of 5. Failed: nosuch.", 2}));
  ASSERT_EQ(children.started().size(), 2U);
  EXPECT_EQ(children.started()[0].arguments[0], "missing");
  EXPECT_EQ(children.started()[1].arguments[0], "old");
  EXPECT_EQ(receipts.readAllReceipts().size(), 2U) << "what the tool was not run for has no history";

  runToEnd({"nosuch", "nothere"});
  ASSERT_FALSE(*answer);
  EXPECT_TRUE(isHelperError(answer->error(), HelperErrorCode::unknownLabel));
  EXPECT_FALSE(files.exists(kRecord));
}

TEST_F(PatchRunnerFixture, ProgressFollowsTheLabels) {
  label("first", "1.0", "2.0");
  label("second", "1.0", "2.0");
  for (const char* name : {"first", "second"}) plays[name] = {"2.0", {.takes = 10s}};
  EXPECT_EQ(runner.progress(), PatchProgressInfo{});
  run({"first", "second"});
  machine.advance(5s);
  EXPECT_EQ(runner.progress(), (PatchProgressInfo{true, "first", 0, 2}));
  EXPECT_TRUE(files.content(kRecord)->find("\"first\"") != std::string::npos);
  machine.advance(10s);
  EXPECT_EQ(runner.progress(), (PatchProgressInfo{true, "second", 1, 2}));
  machine.advance(10s);
  EXPECT_EQ(runner.progress(), PatchProgressInfo{});
  EXPECT_EQ(answer->value(), (PatchRunAnswer{true, "Updated 2 of 2.", 2}));
}

TEST_F(PatchRunnerFixture, AFullDiskEndsTheRunWithATypedError) {
  label("first", "1.0", "2.0");
  label("second", "1.0", "2.0");
  plays["first"] = {"2.0", {}};
  files.failPath(kRecord, ENOSPC);
  runToEnd({"first", "second"});
  ASSERT_FALSE(*answer);
  EXPECT_TRUE(isHelperError(answer->error(), HelperErrorCode::storage));
  EXPECT_TRUE(children.started().empty()) << "without its record nothing is installed";

  files.failPath(kRecord, 0);
  files.failPath(kReceipts, ENOSPC);
  runToEnd({"first", "second"});
  ASSERT_FALSE(*answer);
  EXPECT_TRUE(isHelperError(answer->error(), HelperErrorCode::storage));
  EXPECT_NE(answer->error().text.find("The receipt of first cannot be written"), std::string::npos);
  EXPECT_EQ(children.started().size(), 1U) << "what leaves no receipt is not gone on with";
  EXPECT_FALSE(files.exists(kRecord));

  files.failPath(kReceipts, 0);
  plays["second"] = {"2.0", {}};
  runToEnd({"first", "second"});
  EXPECT_EQ(answer->value(), (PatchRunAnswer{true, "Updated 1 of 2.", 1})) << "the next run finds the first current";
}

struct StoppedRun : PatchRunnerFixture, ::testing::WithParamInterface<bool> {};

TEST_P(StoppedRun, EndsTheToolAndLeavesARecordButNoReceiptOfTheLabelInHand) {
  label("app", "1.0", "2.0");
  plays["app"] = {"", {.takes = 1h, .heedsTerminate = GetParam()}};
  run({"app"});
  machine.advance(1s);
  ASSERT_EQ(children.running(), 1U);
  runner.stop();
  machine.advance(kToolStopGrace - 1s);
  if (GetParam()) {
    ASSERT_TRUE(answer) << "it ended when it was told to";
  } else {
    EXPECT_FALSE(answer) << "it is given its time";
    machine.advance(2s);
    ASSERT_TRUE(answer);
  }
  EXPECT_TRUE(isHelperError(answer->error(), HelperErrorCode::stopping));
  EXPECT_EQ(children.running(), 0U);
  EXPECT_TRUE(receipts.readAllReceipts().empty());
  ASSERT_TRUE(files.exists(kRecord)) << "the next start tells of the label in hand";
  EXPECT_EQ(files.content(kRecord)->find("childPid"), std::string::npos) << "but has no tool to end";
}
INSTANTIATE_TEST_SUITE_P(PoliteAndStubbornTools, StoppedRun, ::testing::Bool());

TEST_F(PatchRunnerFixture, AToolThatBecameUnsafeInARunIsNotRunForTheNextLabel) {
  label("first", "1.0", "2.0");
  label("second", "1.0", "2.0");
  plays["first"] = {"2.0", {.takes = 10s}};
  run({"first", "second"});
  machine.advance(5s);
  chmod(setting.constants.supportFolder().c_str(), 0777);
  machine.advance(10s);
  ASSERT_TRUE(answer && !*answer);
  EXPECT_TRUE(isHelperError(answer->error(), HelperErrorCode::notReady));
  EXPECT_EQ(children.started().size(), 1U);
  EXPECT_EQ(receipts.readAllReceipts().size(), 1U);
}

}  // namespace
}  // namespace corvane
