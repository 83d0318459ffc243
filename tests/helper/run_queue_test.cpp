#include "helper/run_queue.h"

#include "support/test.h"

namespace corvane {
namespace {

ask::StartPatching install(const char* label) { return {.labels = {Label(label)}, .alsoStageLabels = {}}; }
ask::StartPatching staging(const char* label) { return {.labels = {}, .alsoStageLabels = {Label(label)}}; }

std::string drain(RunQueue& queue) {
  std::string order;
  queue.finished();
  while (auto run = queue.startNext()) {
    for (const auto& label : run->request.labels) order += label.text + " ";
    for (const auto& label : run->request.alsoStageLabels) order += "(" + label.text + ") ";
    queue.finished();
  }
  return order;
}

TEST(RunQueue, RunsOneAtATimeInTheOrderAskedAndStagesLast) {
  RunQueue queue;
  EXPECT_FALSE(queue.startNext());
  (void)queue.offer(install("first"));
  ASSERT_TRUE(queue.startNext());
  (void)queue.offer(staging("s"));
  (void)queue.offer(install("a"));
  (void)queue.offer(install("b"));
  EXPECT_FALSE(queue.startNext()) << "a run is in hand";
  EXPECT_EQ(drain(queue), "a b (s) ");
}

TEST(RunQueue, ANewerStagingTakesThePlaceOfTheWaitingOneOnly) {
  RunQueue queue;
  (void)queue.offer(staging("inHand"));
  ASSERT_TRUE(queue.startNext());
  const auto older = queue.offer(staging("older"));
  EXPECT_FALSE(older.replaced) << "the one in hand goes on";
  const auto newer = queue.offer(staging("newer"));
  EXPECT_EQ(newer.replaced, older.ticket);
  EXPECT_EQ(queue.waiting(), 1U);
  EXPECT_EQ(drain(queue), "(newer) ");
}

TEST(RunQueue, RefusesTheNinthThatWaitsButLetsAStagingBeReplaced) {
  RunQueue queue;
  (void)queue.offer(install("inHand"));
  ASSERT_TRUE(queue.startNext());
  for (std::size_t i = 0; i + 1 < kWaitingRunsLimit; ++i) EXPECT_TRUE(queue.offer(install("x")).ticket);
  const auto eighth = queue.offer(staging("old"));
  ASSERT_TRUE(eighth.ticket);
  EXPECT_EQ(queue.offer(install("late")), RunQueue::Offer{});
  const auto replacing = queue.offer(staging("new"));
  EXPECT_TRUE(replacing.ticket);
  EXPECT_EQ(replacing.replaced, eighth.ticket);
  EXPECT_EQ(queue.dropWaiting().size(), kWaitingRunsLimit);
  EXPECT_EQ(queue.waiting(), 0U);
}

TEST(RunQueue, TheHelpersOwnInstallGoesFirstAndFindsItsPlaceInAFullQueue) {
  RunQueue queue;
  (void)queue.offer(install("inHand"));
  ASSERT_TRUE(queue.startNext());
  for (std::size_t i = 0; i < kWaitingRunsLimit; ++i) EXPECT_TRUE(queue.offer(install("x")).ticket);
  EXPECT_TRUE(queue.offerOwn(install("own")).ticket);
  EXPECT_EQ(drain(queue).substr(0, 6), "own x ");
  (void)queue.offer(staging("client"));
  EXPECT_TRUE(queue.offerOwn(staging("own")).replaced) << "a staging of ours is a newer one";
  (void)queue.offer(install("a"));
  EXPECT_EQ(drain(queue), "a (own) ");
}

}  // namespace
}  // namespace corvane
