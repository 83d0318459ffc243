// What requests may pile up and what goes before what: scans are held back by hand, time is virtual.
#include "helper/helper_service.h"

#include <fmt/format.h>

#include "helper/held_work.h"
#include "helper/runner_fixture.h"

namespace corvane {
namespace {

struct HeldScans {
  HeldWork work;
};

struct ServiceFixture : HeldScans, RunnerFixture {
  RunDesk desk{{.log = log, .runner = runner, .stager = stager}};
  HelperService service{
      {.main = machine.main(), .discoverer = discoverer, .versions = versions, .desk = desk, .status = [] {
         return StatusInfo{};
       }}};
  std::map<std::string, int> answers;

  ServiceFixture() : RunnerFixture(&work) { offer("quill", "2.0"); }
  void ask(const std::string& id, HelperQuestion question) {
    service.handle({.id = id, .question = std::move(question)}, [this, id](const std::string& body) {
      const auto parsed = parseAnswer(body, id);
      answers[id] = parsed ? 0 : parsed.error().code;
    });
    machine.runUntilIdle();
  }
  static ask::DiscoverForLabels scoped(std::size_t number) {
    return {.labels = {Label("quill"), Label("x" + std::to_string(number))}};
  }
  std::size_t finishAll() {
    std::size_t count = 0;
    for (; !work.jobs.empty(); ++count) {
      work.finish();
      machine.runUntilIdle();
    }
    return count;
  }
};

TEST_F(ServiceFixture, TellsThatItIsBusyPastTheDiscoveriesThatMayWaitAndGoesOnWithAllElse) {
  for (std::size_t i = 0; i < kOpenDiscoveriesLimit; ++i) ask("d" + std::to_string(i), scoped(i));
  EXPECT_TRUE(answers.empty()) << "all of them were taken";
  ask("installed", ask::DiscoverInstalled{});
  ask("updates", ask::DiscoverWithUpdates{});
  ask("labels", scoped(0));
  for (const char* id : {"installed", "updates", "labels"})
    EXPECT_EQ(answers[id], static_cast<int>(HelperErrorCode::busy)) << id;
  ask("status", ask::Status{});
  ask("progress", ask::PatchingProgress{});
  ask("run", ask::StartPatching{.labels = {Label("quill")}, .alsoStageLabels = {}});
  EXPECT_EQ(answers["status"], 0);
  EXPECT_EQ(answers["progress"], 0);
  EXPECT_FALSE(answers.contains("run")) << "runs have a limit of their own";

  finishAll();
  EXPECT_EQ(answers["d0"], 0);
  EXPECT_EQ(answers.size(), kOpenDiscoveriesLimit + 6);
  ask("again", ask::DiscoverInstalled{});
  EXPECT_FALSE(answers.contains("again")) << "places come free";
  finishAll();
  EXPECT_EQ(answers["again"], 0);
}

TEST_F(ServiceFixture, EqualDiscoveriesThatWaitShareOneScan) {
  for (int i = 0; i < 10; ++i) ask("same" + std::to_string(i), ask::DiscoverInstalled{});
  ask("other", scoped(0));
  EXPECT_EQ(work.jobs.size(), 1U) << "one scan at a time";
  work.finish();
  machine.runUntilIdle();
  EXPECT_EQ(answers.size(), 1U) << "a scan that has begun is not joined";
  EXPECT_EQ(finishAll(), 2U);
  EXPECT_EQ(answers.size(), 11U);
}

TEST_F(ServiceFixture, ARequestThatNamesThousandsOfLabelsLeavesOneShortLine) {
  Labels many;
  for (std::size_t i = 0; i < kHelperLabelsLimit; ++i)
    many.emplace_back(fmt::format("{:04}{}", i, std::string(kHelperLabelLengthLimit - 4, 'x')));
  ask("labels", ask::DiscoverForLabels{.labels = many});
  finishAll();
  ask("staging", ask::StartPatching{.labels = {}, .alsoStageLabels = many});
  ASSERT_EQ(log.lines().size(), 2U);
  for (const auto& line : log.lines()) {
    EXPECT_NE(line.message.find("5000 label(s)"), std::string::npos) << line.message;
    EXPECT_NE(line.message.find(many.front().text), std::string::npos) << line.message;
    EXPECT_LT(line.message.size(), 1000U);
  }
  log.clear();
  ask("few", ask::DiscoverForLabels{.labels = {Label("quill"), Label("a"), Label("b")}});
  finishAll();
  EXPECT_TRUE(log.holds("2 label(s), left out: a, b."));
}

TEST_F(ServiceFixture, ARunsDiscoveryWaitsForNoClient) {
  for (std::size_t i = 0; i < kOpenDiscoveriesLimit; ++i) ask("d" + std::to_string(i), scoped(i));
  ask("run", ask::StartPatching{.labels = {Label("nosuch")}, .alsoStageLabels = {}});
  ASSERT_EQ(work.jobs.size(), 2U) << "one scan of a client, which may hang, and the run's beside it";
  work.finish(1);
  machine.runUntilIdle();
  EXPECT_EQ(answers["run"], static_cast<int>(HelperErrorCode::unknownLabel));
  EXPECT_EQ(answers.size(), 1U);
  finishAll();
}

TEST_F(ServiceFixture, AScanThatHangsFailsItsAskersInTimeAndHoldsUpNoRun) {
  const auto failed = static_cast<int>(HelperErrorCode::discoveryFailed);
  ask("hangs", ask::DiscoverWithUpdates{});
  ask("waits", ask::DiscoverInstalled{});
  machine.advance(kDiscoveryTimeLimit - 1s);
  EXPECT_TRUE(answers.empty());
  ask("late", scoped(0));
  machine.advance(2s);
  EXPECT_EQ(answers["hangs"], failed);
  EXPECT_EQ(answers["waits"], failed);
  EXPECT_EQ(answers.size(), 2U) << "whoever asked later has their own time";
  EXPECT_TRUE(discoverer.scanning());

  ask("run", ask::StartPatching{.labels = {Label("nosuch")}, .alsoStageLabels = {}});
  ASSERT_EQ(work.jobs.size(), 2U) << "no second scan of a client is begun beside one that hangs";
  work.finish(1);
  machine.runUntilIdle();
  EXPECT_EQ(answers["run"], static_cast<int>(HelperErrorCode::unknownLabel));

  work.finish();
  machine.runUntilIdle();
  EXPECT_TRUE(children.started().empty()) << "nobody waits for its versions";
  finishAll();
  EXPECT_EQ(answers["late"], 0) << "the folders are back";
  EXPECT_FALSE(discoverer.scanning());
  machine.advance(kDiscoveryTimeLimit);
  EXPECT_EQ(answers.size(), 4U);
}

TEST_F(ServiceFixture, ARunWhoseScanHangsFailsInTime) {
  ask("run", ask::StartPatching{.labels = {Label("quill")}, .alsoStageLabels = {}});
  machine.advance(kDiscoveryTimeLimit + 1s);
  EXPECT_EQ(answers["run"], static_cast<int>(HelperErrorCode::discoveryFailed));
  EXPECT_EQ(runner.progress(), PatchProgressInfo{});
  finishAll();
}

TEST_F(ServiceFixture, StoppingAnswersAllWithoutWaitingForAScan) {
  ask("updates", ask::DiscoverWithUpdates{});
  for (std::size_t i = 0; i < 5; ++i) ask("d" + std::to_string(i), scoped(i));
  ask("run", ask::StartPatching{.labels = {Label("quill")}, .alsoStageLabels = {}});
  bool answered = false;
  service.stop([&] { answered = true; });
  machine.runUntilIdle();
  EXPECT_TRUE(answered);
  for (const auto* id : {"updates", "d0", "d4", "run"})
    EXPECT_EQ(answers[id], static_cast<int>(HelperErrorCode::stopping)) << id;
  EXPECT_EQ(finishAll(), 2U) << "the two that had begun; no other is";
  EXPECT_TRUE(children.started().empty());
}

}  // namespace
}  // namespace corvane
