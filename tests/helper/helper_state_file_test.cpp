// The helper writes, the application's own readers read.
#include "helper/helper_state_file.h"

#include <cerrno>

#include "core/history/helper_state_stores.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/test.h"

namespace corvane {
namespace {

const std::filesystem::path kState = "/support/helper-state.json";
const std::filesystem::path kApps = "/support/helper-discovered-apps.json";

struct StateFile : ::testing::Test {
  VirtualMachine machine;
  RecordingLog log;
  ScriptedFiles files{machine.clock()};
  HelperBackgroundPatchStateStore reader{kState, files, log};
  const HelperBackgroundCurrentRun run{.runID = "R1", .startedAt = machine.now(), .totalLabels = 2};
  const BackgroundPatchSummary summary{.runID = "R1",
                                       .completedAt = machine.now() + 5min,
                                       .labels = {Label("quill"), Label("stamp")},
                                       .totalLabels = 2,
                                       .patchedCount = 1,
                                       .failureCount = 1,
                                       .hasFailures = true};
  const ScheduledDiscoverySummary found{
      .runID = "D1", .completedAt = machine.now(), .appCount = 1, .pendingUpdateCount = 1};

  StateFile() { EXPECT_TRUE(files.makeFolders("/support")); }
  HelperStateFile open() {
    HelperStateFile file(kState, kApps, files, machine.clock(), log);
    file.settle();
    return file;
  }
  [[nodiscard]] std::string stored() const { return files.content(kState).value_or(""); }
};

TEST_F(StateFile, EveryStepOfAPassAndADiscoveryStandsBesideTheOthers) {
  auto file = open();
  const Apps apps{AppInfo{.label = Label("quill"), .name = "Quill", .currentVersion = "1.0", .newVersion = "2.0"}};
  ASSERT_TRUE(file.discoveryEnded(found, apps));
  EXPECT_EQ(HelperScheduledDiscoveryAppsStore(kApps, files, log).read(), apps);
  file.passGoesOn(run);
  EXPECT_TRUE(reader.read()->isBackgroundPassActive(machine.now(), 1h));
  auto later = run;
  later.completedCount = 1;
  later.currentLabel = "stamp";
  file.passGoesOn(later);
  EXPECT_EQ(reader.read()->currentRun, later);
  file.passEnded(summary);
  EXPECT_EQ(reader.read(), (HelperPatchState{summary, std::nullopt, found}));
  EXPECT_EQ(open().lastPassConcludedAt(), summary.completedAt);
  file.passGoesOn(run);
  file.passCutOff();
  file.passConcluded(machine.now() + 2h);
  EXPECT_EQ(reader.read(), (HelperPatchState{summary, std::nullopt, found}));
  EXPECT_EQ(open().lastPassConcludedAt(), machine.now() + 2h);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(StateFile, ThePassOfAKilledHelperIsTakenOutAndToldOnce) {
  open().passGoesOn(run);
  const auto next = open();
  EXPECT_EQ(next.state().currentRun, std::nullopt);
  EXPECT_EQ(reader.read()->currentRun, std::nullopt);
  EXPECT_TRUE(log.holds("0 of 2 label(s) done"));
  log.clear();
  (void)open();
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(StateFile, WhatEndsOneHelperAfterTheOtherWaitsForTheInterval) {
  open().passGoesOn(run);
  EXPECT_EQ(open().lastPassConcludedAt(), std::nullopt) << "one may try again at once";
  open().passGoesOn(run);
  EXPECT_EQ(open().lastPassConcludedAt(), machine.now());
  auto third = open();
  third.passGoesOn(run);
  third.passEnded(summary);
  third.passGoesOn(run);
  EXPECT_EQ(open().lastPassConcludedAt(), summary.completedAt) << "counted anew";
}

TEST_F(StateFile, FieldsThatItDoesNotKnowStay) {
  files.put(kState, R"({"colour":"blue","lastPassConcludedAt":7})");
  auto file = open();
  EXPECT_EQ(file.lastPassConcludedAt(), dateFromSecondsSince2001(7));
  file.passEnded(summary);
  EXPECT_NE(stored().find(R"("colour":"blue")"), std::string::npos) << stored();
}

TEST_F(StateFile, WhatIsDamagedOrOfALaterVersionIsSetAsideBeforeTheFirstWrite) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "JSON"},
      {"{\"version\":1,", "JSON"},
      {"[]", "HelperPatchState"},
      {R"({"currentRun":{"runID":7}})", "currentRun"},
      {R"({"version":2,"currentRun":"in a form of its own"})", "later version"},
  };
  for (const auto& [content, reason] : rows) {
    files.put(kState, content);
    log.clear();
    auto file = open();
    EXPECT_EQ(stored(), content) << "nothing is moved while nothing is written";
    file.passEnded(summary);
    EXPECT_EQ(reader.read()->lastBackgroundPatchSummary, summary) << content;
    ASSERT_EQ(log.lines().size(), 1U) << content;
    const auto line = log.lines().front().message;
    EXPECT_THAT(line, HasSubstr(reason));
    const auto name = line.substr(line.find("helper-state.json.set-aside-"));
    EXPECT_EQ(files.content("/support/" + name.substr(0, name.find(": "))), content) << line;
  }
}

TEST_F(StateFile, NothingIsOverwrittenThatCouldNotBeSetAside) {
  files.put(kState, "torn");
  auto file = open();
  files.failCall(1, EROFS);
  file.passGoesOn(run);
  EXPECT_EQ(stored(), "torn");
  EXPECT_EQ(log.count("cannot be written"), 1U);
  file.passEnded(summary);
  EXPECT_EQ(reader.read()->lastBackgroundPatchSummary, summary) << "and the next change tries again";
}

TEST_F(StateFile, AFailedWriteIsToldOnceAndMadeGoodByTheNext) {
  auto file = open();
  files.failPath(kState, ENOSPC);
  file.passGoesOn(run);
  file.passEnded(summary);
  EXPECT_EQ(log.count("No space left"), 1U);
  EXPECT_FALSE(reader.read());
  files.failPath(kState, 0);
  ASSERT_TRUE(file.discoveryEnded(found, {}));
  EXPECT_EQ(reader.read(), (HelperPatchState{summary, std::nullopt, found}));
  files.failPath(kApps, ENOSPC);
  EXPECT_FALSE(file.discoveryEnded({.runID = "D2"}, {}));
  EXPECT_EQ(reader.read()->lastScheduledDiscoverySummary, found) << "no summary without its list";
}

}  // namespace
}  // namespace corvane
