#include "helper/version_checker.h"

#include "platform/scripted/scripted_child_processes.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

struct CheckerFixture : ::testing::Test {
  VirtualMachine machine;
  ScriptedEntropy entropy;
  RecordingLog log;
  testing::TemporaryFolder folder;
  std::map<std::string, std::string> printed;  // what each label's evaluation prints as its version
  Duration takes = 50ms;
  std::vector<std::string> toolLines;
  ScriptedChildProcesses children{machine.main(), [this](const ChildSpec& spec) { return script(spec); }};
  VersionChecker checker{{.children = children, .main = machine.main(), .entropy = entropy, .log = log},
                         "/bin/zsh",
                         [this] { return account; }};
  Result<std::optional<std::pair<uid_t, gid_t>>> account = std::nullopt;
  std::optional<VersionAnswers> answers;

  std::vector<std::filesystem::path> downloads;

  static std::string valueIn(const ChildSpec& spec, std::string_view key) {
    const auto found = std::ranges::find(spec.environment, key, [](const auto& entry) { return entry.first; });
    return found == spec.environment.end() ? std::string() : found->second;
  }
  ScriptedChild script(const ChildSpec& spec) {
    const auto temporary = valueIn(spec, "TMPDIR");
    downloads.push_back(std::filesystem::path(temporary) / ("download" + std::to_string(downloads.size())));
    std::ofstream(downloads.back()) << "half of it";
    if (spec.executable != "/bin/zsh") return {.lines = toolLines, .takes = takes};
    const auto& label = spec.arguments.at(6);
    return {.exit = ChildExit{.output = spec.arguments.at(7) + printed[label] + "\n"}, .takes = takes};
  }
  VersionQuestion computed(const std::string& label) const {
    return {.label = Label(label), .fragment = folder.write(label + ".sh", label + ")\n;;\n")};
  }
  void check(std::vector<VersionQuestion> questions, CheckSetting setting = {}) {
    answers.reset();
    checker.check(std::move(questions), setting, [this](VersionAnswers a) { answers = std::move(a); });
  }
};

TEST_F(CheckerFixture, LiteralsNeedNoChildAndGarbageIsNotBelieved) {
  printed = {{"good", "1.2"}, {"garbage", "https:"}, {"literalGarbage", "3.0"}};
  check({{.label = Label("literal"), .literal = "7.1", .fragment = {}},
         computed("good"),
         computed("garbage"),
         {.label = Label("none"), .namedInMetadata = false, .fragment = {}},
         {.label = Label("gone"), .fragment = folder.path() / "gone.sh"}});
  machine.advance(1s);
  ASSERT_TRUE(answers);
  EXPECT_EQ(answers->at(Label("literal")).version, "7.1");
  EXPECT_EQ(answers->at(Label("good")).version, "1.2");
  EXPECT_FALSE(answers->at(Label("garbage")).version);
  EXPECT_EQ(answers->at(Label("none")).failureReason, "The label names no version");
  EXPECT_EQ(answers->at(Label("gone")).failureReason, "The label's file cannot be read");
  EXPECT_EQ(children.started().size(), 2U);
  for (const auto& spec : children.started()) {
    EXPECT_EQ(spec.environment.size(), 5U);
    EXPECT_EQ(spec.timeLimit, kLabelTimeLimit);
    EXPECT_TRUE(spec.endsGroup);
    EXPECT_EQ(spec.bounds, kLabelBounds);
  }
}

TEST_F(CheckerFixture, RunsAFewAtOnceAndAnswersTheRestAtTheGroupsLimit) {
  takes = 15s;
  std::vector<VersionQuestion> many;
  constexpr auto kMany = 7 * kChildrenAtOnce;
  for (std::size_t i = 0; i < kMany; ++i) {
    const auto label = "l" + std::to_string(i);
    printed[label] = "1." + std::to_string(i);
    many.push_back(computed(label));
  }
  check(many);
  machine.advance(1s);
  EXPECT_EQ(children.running(), kChildrenAtOnce);
  machine.advance(kCheckTimeLimit - 2s);
  EXPECT_FALSE(answers);
  machine.advance(1s);
  ASSERT_TRUE(answers);
  EXPECT_EQ(answers->size(), kMany);
  const auto found = std::ranges::count_if(*answers, [](const auto& a) { return a.second.version.has_value(); });
  EXPECT_EQ(static_cast<std::size_t>(found), 5 * kChildrenAtOnce);
  EXPECT_EQ(answers->at(Label("l" + std::to_string(kMany - 1))).failureReason,
            "All labels together took longer than 80 seconds");
  machine.advance(10s);
  EXPECT_EQ(children.running(), 0U);
}

TEST_F(CheckerFixture, AsksTheToolWhereTheMetadataIsSilentAndEndsItOnceItKnows) {
  toolLines = {"2026-11-22 21:04:42 : INFO  : none : Latest version not specified.",
               "2026-11-22 21:05:42 : INFO  : none : Downloaded version of None is 5.5 on versionKey CFBundleVersion."};
  printed["silent"] = "";
  check({{.label = Label("none"), .namedInMetadata = false, .fragment = {}}, computed("silent")},
        {.functions = {}, .askTool = "/tool"});
  machine.advance(10s);
  ASSERT_TRUE(answers);
  EXPECT_EQ(answers->at(Label("none")).version, "5.5");
  EXPECT_EQ(answers->at(Label("silent")).version, "5.5");
  EXPECT_EQ(children.started().front().bounds, kToolQuestionBounds);
  ASSERT_EQ(downloads.size(), 3U);
  for (std::size_t i = 0; i < downloads.size(); ++i) {
    EXPECT_EQ(downloads[i].parent_path(), valueIn(children.started()[i], "HOME"));
    EXPECT_FALSE(std::filesystem::exists(downloads[i])) << "a child that is killed removes nothing itself";
  }
  EXPECT_EQ(children.started().front().arguments,
            (std::vector<std::string>{"none", "DEBUG=2", "BLOCKING_PROCESS_ACTION=ignore", "NOTIFY=silent",
                                      "updateTool=\"\""}));
}

TEST_F(CheckerFixture, AToolThatHangsCostsOnlyItsOwnLabelTheAnswer) {
  takes = 1000s;
  check({{.label = Label("literal"), .literal = "7.1", .fragment = {}},
         {.label = Label("none"), .namedInMetadata = false, .fragment = {}},
         computed("hangs")},
        {.functions = {}, .askTool = "/tool"});
  machine.advance(kLabelTimeLimit);
  EXPECT_EQ(children.running(), 1U) << "the label's own limit";
  machine.advance(kToolQuestionLimit - kLabelTimeLimit);
  ASSERT_TRUE(answers) << "before the limit of the whole check";
  EXPECT_EQ(answers->at(Label("literal")).version, "7.1");
  EXPECT_EQ(answers->at(Label("hangs")).failureReason, "The vendor's page did not answer within 20 seconds");
  EXPECT_EQ(answers->at(Label("none")).failureReason, "Installomator told no version");
}

TEST_F(CheckerFixture, WhatMayNotBeEvaluatedIsAnsweredWithoutAChild) {
  check({computed("adobereaderdc")});
  machine.runUntilIdle();
  EXPECT_NE(answers->at(Label("adobereaderdc")).failureReason, "");
  account = failure("test", 1, "nobody there");
  check({{.label = Label("literal"), .literal = "7.1", .fragment = {}}, computed("label")});
  machine.runUntilIdle();
  ASSERT_TRUE(answers);
  EXPECT_EQ(answers->at(Label("literal")).version, "7.1");
  EXPECT_EQ(answers->at(Label("label")).failureReason, "The helper cannot evaluate labels: nobody there");
  EXPECT_TRUE(children.started().empty());
}

TEST_F(CheckerFixture, StoppingAnswersWhatIsUnderWay) {
  takes = 15s;
  check({computed("late")});
  machine.advance(1s);
  checker.stop();
  machine.runUntilIdle();
  ASSERT_TRUE(answers);
  EXPECT_EQ(answers->at(Label("late")).failureReason, "The helper is stopping");
}

}  // namespace
}  // namespace corvane
