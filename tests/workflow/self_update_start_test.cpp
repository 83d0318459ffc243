// How an update of the program itself is started.
#include "workflow_fixture.h"

namespace corvane {
namespace {

struct SelfUpdateTest : WorkflowTest {
  [[nodiscard]] std::optional<Date> startedAt() const { return preferences.readOptional<Date>("SelfUpdateStartedAt"); }
};

TEST_F(SelfUpdateTest, itRunsAloneAndLeavesTheDateForTheLaunchThatFollows) {
  build();
  model->startSelfUpdate(label("ourselves"));
  EXPECT_EQ(startedAt(), time.now());
  EXPECT_EQ(fields().gate.currentOperation, DiscoveryOperation::patchSingle);
  EXPECT_THAT(running(), Labels{label("ourselves")});
  EXPECT_TRUE(helper.runs.front().alsoStageLabels.empty());
}

TEST_F(SelfUpdateTest, askedForTwiceWhileSomethingRunsItStartsOnceAfterwards) {
  buildWith({current("a")});
  model->checkForUpdates();
  settle();
  model->startSelfUpdate(label("ourselves"));
  model->startSelfUpdate(label("ourselves"));
  EXPECT_EQ(log.count("StatusViewModel: Self-update will start when the current operation finishes."), 2U);
  EXPECT_TRUE(fields().selfUpdate.selfUpdateQueued);
  EXPECT_EQ(startedAt(), std::nullopt);
  answer(Apps{current("a")});
  EXPECT_FALSE(fields().selfUpdate.selfUpdateQueued);
  ASSERT_EQ(helper.runs.size(), 1U);
  answerRun(PatchRunAnswer{.success = true, .message = "Updated 1 of 1."});
  answer(Apps{});
  EXPECT_TRUE(model->isIdle()) << "nothing else was queued";
  EXPECT_EQ(helper.runsAsked, 1);
}

TEST_F(SelfUpdateTest, whatIsKnownOfItIsSetAndTakenAway) {
  build();
  int told = 0;
  const auto stays = model->observe([&] { ++told; });
  model->setSelfUpdateAvailable(SelfUpdateAvailability{.label = label("ourselves"), .availableVersion = "5.0"});
  settle();
  EXPECT_EQ(fields().selfUpdate.selfUpdateAvailable->availableVersion, "5.0");
  model->setSelfUpdateAvailable(std::nullopt);
  settle();
  EXPECT_FALSE(fields().selfUpdate.selfUpdateAvailable);
  EXPECT_EQ(told, 2);
}

}  // namespace
}  // namespace corvane
