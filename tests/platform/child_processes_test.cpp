#include "support/child_processes_contract.h"

#include <signal.h>
#include <unistd.h>

#include "platform/posix/process_stamp.h"
#include "platform/scripted/scripted_child_processes.h"
#include "platform/scripted/virtual_time.h"
#include "platform/uv/line_splitter.h"
#include "platform/uv/uv_child_processes.h"
#include "support/real_loop.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

namespace {

class RealWorld {
 public:
  explicit RealWorld(ChildLimits limits = {}) : limits_(limits) {}
  ChildProcesses& children() { return children_; }
  static ChildSpec shell(const std::string& script) {
    return {.executable = "/bin/sh", .arguments = {"-c", script}, .environment = {{"PATH", "/usr/bin:/bin"}}};
  }
  bool wait(const std::function<bool()>& done) { return loop_.wait(done); }

 private:
  ChildLimits limits_;
  RealLoop loop_;
  UvChildProcesses children_{loop_.loop(), loop_.mainQueue(), limits_};
};

class ScriptedWorld {
 public:
  ChildProcesses& children() { return children_; }
  static ChildSpec shell(const std::string& script) { return {.executable = "/bin/sh", .arguments = {"-c", script}}; }
  bool wait(const std::function<bool()>& done) {
    machine_.advance(10s);
    return done();
  }

 private:
  static ScriptedChild play(const ChildSpec& spec) {
    if (spec.executable != "/bin/sh") return {.exit = failure("CRVChildProcess", ENOENT, "no such file")};
    if (spec.arguments.at(1) == kHangScript) return {.takes = 1000s};
    return {.exit = ChildExit{.code = 3, .output = "one\n", .errors = "two\n"}, .lines = {"one", "two"}};
  }
  VirtualMachine machine_;
  ScriptedChildProcesses children_{machine_.main(), play};
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Uv, ChildProcessesContract, RealWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, ChildProcessesContract, ScriptedWorld);

struct UvChildProcessesTest : ::testing::Test {
  Result<ChildExit> run(ChildSpec spec) { return run(std::move(spec), world_); }
  Result<ChildExit> run(ChildSpec spec, RealWorld& world) {
    std::optional<Result<ChildExit>> exit;
    world.children().start(
        std::move(spec), [this](std::string_view line) { lines_.emplace_back(line); },
        [&](Result<ChildExit> ended) { exit = std::move(ended); });
    EXPECT_TRUE(world.wait([&] { return exit.has_value(); }));
    return std::move(exit).value_or(failure("test", 0, "never ended"));
  }

  RealWorld world_;
  RealWorld hastyWorld_{{.killDelay = 50ms, .streamLimit = 100ms}};
  TemporaryFolder folder_;
  std::vector<std::string> lines_;
};

TEST_F(UvChildProcessesTest, TheEnvironmentIsWhatWasGivenAndArgumentsAreTakenLiterally) {
  auto spec = RealWorld::shell("");
  spec.executable = "/usr/bin/env";
  spec.arguments = {};
  spec.environment = {{"ONLY", "this one"}};
  EXPECT_EQ(run(spec)->output, "ONLY=this one\n");

  spec.executable = "/bin/echo";
  spec.arguments = {"$(touch x)", "; rm -rf", "a  b"};
  EXPECT_EQ(run(spec)->output, "$(touch x) ; rm -rf a  b\n");

  spec.executable = "echo";
  EXPECT_FALSE(run(spec).has_value()) << "PATH is never searched";
}

TEST_F(UvChildProcessesTest, OutputOverTheLimitIsReadAndDropped) {
  auto spec = RealWorld::shell("head -c 300000 /dev/zero; echo end >&2");
  spec.outputLimit = 1000;
  const auto exit = run(spec);
  EXPECT_EQ(exit->code, 0) << "the child was never kept waiting";
  EXPECT_EQ(exit->output.size(), 1000U);
  EXPECT_EQ(exit->errors, "end\n");
  EXPECT_EQ(run(RealWorld::shell("cat; echo out > /dev/stdout"))->output, "out\n") << "reopened by name, no input";
}

TEST_F(UvChildProcessesTest, WhatAChildLeavesBehindEndsWithItWhereItIsToldTo) {
  auto spec = RealWorld::shell("sleep 600 & echo $!");
  spec.endsGroup = true;
  const auto exit = run(spec);
  const auto left = static_cast<pid_t>(std::stol(exit->output));
  EXPECT_TRUE(world_.wait([&] { return !processStamp(left); }));
  spec.endsGroup = false;
  const auto kept = static_cast<pid_t>(std::stol(run(spec, hastyWorld_)->output));
  EXPECT_TRUE(processStamp(kept));
  ::kill(kept, SIGKILL);
}

TEST_F(UvChildProcessesTest, AChildThatWasToldToEndIsAnsweredForWhenItsGroupHasEnded) {
  // The leader heeds the signal; what it started, and which holds no stream of ours, does not, or takes its time.
  const auto leaderOf = [](const std::string& member) {
    return RealWorld::shell("(" + member + ") >/dev/null 2>&1 & exec sleep 600");
  };
  std::optional<Result<ChildExit>> exit;
  const auto start = [&](const std::string& member) {
    exit.reset();
    const auto ready = folder_.path() / "ready";
    std::filesystem::remove(ready);
    auto child =
        world_.children().start(leaderOf(member), nullptr, [&](Result<ChildExit> ended) { exit = std::move(ended); });
    EXPECT_TRUE(world_.wait([&] { return std::filesystem::exists(ready); }));
    return child;
  };
  const auto path = folder_.path().string();
  const auto leaderEnded = [&](const ChildHandle& child) {
    return world_.wait([&] { return !processStamp(child.pid()); });
  };

  const auto stubborn = start("trap '' TERM; touch " + path + "/ready; exec sleep 600");
  const auto stamp = processStamp(stubborn->pid()).value_or("");
  stubborn->terminate();
  ASSERT_TRUE(leaderEnded(*stubborn));
  EXPECT_EQ(processesOfSession(stubborn->pid(), stamp).size(), 1U);
  EXPECT_FALSE(exit);
  stubborn->kill();
  ASSERT_TRUE(world_.wait([&] { return exit.has_value(); }));
  EXPECT_EQ((*exit)->code, 128 + SIGTERM);
  EXPECT_TRUE(world_.wait([&] { return processesOfSession(stubborn->pid(), stamp).empty(); }));

  const auto tidy = start("trap 'until [ -e " + path + "/go ]; do sleep 0.01; done; touch " + path +
                          "/tidied; exit' TERM; touch " + path + "/ready; while :; do sleep 0.01; done");
  tidy->terminate();
  ASSERT_TRUE(leaderEnded(*tidy));
  EXPECT_FALSE(exit);
  folder_.write("go", "");
  ASSERT_TRUE(world_.wait([&] { return exit.has_value(); }));
  EXPECT_TRUE(std::filesystem::exists(folder_.path() / "tidied")) << "it had its time";
}

TEST_F(UvChildProcessesTest, BoundsHoldForTheChildAndWhatItStarts) {
  // The bounds come right behind the start, so the script waits for the last of them.
  const auto file = folder_.path() / "written";
  auto spec = RealWorld::shell(
      "until [ \"$(ulimit -f)\" = 8 ]; do :; done; ulimit -v; ulimit -Hv; "
      "head -c 100000 /dev/zero > " +
      file.string());
  spec.bounds = {.memory = 512U << 20U, .fileSize = 4096};
  spec.timeLimit = kPatience;
  const auto exit = run(spec);
  EXPECT_EQ(exit->output, "524288\n524288\n");
  EXPECT_EQ(exit->code, 128 + SIGXFSZ);
  EXPECT_EQ(std::filesystem::file_size(file), 4096U);

  spec =
      RealWorld::shell("until [ \"$(ulimit -v)\" = 49152 ]; do :; done; page=$(exec tr '\\0' x < /dev/zero); echo $?");
  spec.bounds = {.memory = 48U << 20U, .fileSize = 4096};
  spec.timeLimit = kPatience;
  const auto flooded = run(spec);
  EXPECT_NE(flooded->code, 0);
  EXPECT_FALSE(flooded->timedOut);
  EXPECT_EQ(flooded->output, "");
}

TEST_F(UvChildProcessesTest, AChildThatIgnoresThePoliteSignalIsForced) {
  auto spec = RealWorld::shell("trap '' TERM; echo up; while :; do sleep 1000; done");
  spec.timeLimit = 200ms;
  const auto exit = run(spec, hastyWorld_);
  ASSERT_TRUE(exit.has_value());
  EXPECT_TRUE(exit->timedOut);
  EXPECT_EQ(exit->code, 128 + SIGKILL);
}

TEST_F(UvChildProcessesTest, TheTimeLimitReachesTheWholeGroup) {
  RealWorld world({.streamLimit = 100ms});  // the forced signal is too late to be what ends the group
  auto spec = RealWorld::shell("trap '' TERM; (trap '' TERM; exec sleep 1000) & echo $!; exec sleep 0.2");
  spec.timeLimit = 50ms;
  const auto exit = run(spec, world);
  ASSERT_TRUE(exit.has_value());
  EXPECT_TRUE(exit->timedOut);
  const auto stubborn = std::stoi(exit->output);
  EXPECT_TRUE(world_.wait([&] {
    const auto stat = TemporaryFolder::read("/proc/" + std::to_string(stubborn) + "/stat");
    return stat.empty() || stat.find(") Z ") != std::string::npos;
  }));
}

TEST_F(UvChildProcessesTest, ChildrenRunAsAnotherUserWithoutOurGroups) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root may become somebody else";
  auto spec = RealWorld::shell("id -u; id -G");
  spec.runAs = {65534, 65534};
  EXPECT_EQ(run(spec)->output, "65534\n65534\n");
}

TEST_F(UvChildProcessesTest, OwnersMayDieBeforeTheirChildren) {
  RealLoop loop;
  pid_t pid = 0;
  {
    UvChildProcesses children(loop.loop(), loop.mainQueue());
    pid = children
              .start(RealWorld::shell(kHangScript), nullptr,
                     [](Result<ChildExit>) { FAIL() << "nobody is left to hear"; })
              ->pid();
    children.start({.executable = "/nonexistent"}, nullptr, [](Result<ChildExit>) { FAIL(); });
  }
  loop.turn();
  EXPECT_EQ(::kill(pid, SIGKILL), 0);
}

TEST(LineSplitterTest, LinesAreCutAcrossPiecesAndAtTheLimit) {
  LineSplitter splitter(4);
  EXPECT_THAT(splitter.take("ab"), ElementsAre());
  EXPECT_THAT(splitter.take("c\r\n\nde"), ElementsAre("abc", ""));
  EXPECT_THAT(splitter.take("fg\n"), ElementsAre("defg")) << "at the limit";
  EXPECT_THAT(splitter.take("12345\n"), ElementsAre("1234", "5")) << "one past it";
  EXPECT_THAT(splitter.take("end"), ElementsAre());
  EXPECT_THAT(splitter.rest(), ElementsAre("end"));
  EXPECT_THAT(splitter.rest(), ElementsAre());
}

}  // namespace corvane::testing
