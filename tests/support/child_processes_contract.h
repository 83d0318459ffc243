// What every answer to the ChildProcesses port does. Instantiate with a world that has `children()`,
// `shell(script)`, which gives a ChildSpec that runs it (the scripted world knows the scripts below by heart), and
// `wait(done)`, which lets turns pass until `done` holds and gives whether it came to hold.
#pragma once

#include "platform/child_processes.h"
#include "support/test.h"

namespace corvane::testing {

constexpr const char* kSpeakScript = "echo one; echo two >&2; exit 3";
constexpr const char* kHangScript = "exec sleep 1000";

template <class World>
struct ChildProcessesContract : ::testing::Test {
  std::shared_ptr<ChildHandle> start(ChildSpec spec) {
    return world_.children().start(
        std::move(spec), [this](std::string_view line) { lines_.emplace_back(line); },
        [this](Result<ChildExit> exit) { exit_ = std::move(exit); });
  }
  bool wait() {
    return world_.wait([this] { return exit_.has_value(); });
  }

  World world_;
  std::vector<std::string> lines_;
  std::optional<Result<ChildExit>> exit_;
};
TYPED_TEST_SUITE_P(ChildProcessesContract);

TYPED_TEST_P(ChildProcessesContract, TheEndBringsCodeOutputAndLinesInALaterTurn) {
  const auto child = this->start(this->world_.shell(kSpeakScript));
  EXPECT_GT(child->pid(), 0);
  EXPECT_FALSE(this->exit_.has_value());
  ASSERT_TRUE(this->wait());
  ASSERT_TRUE(this->exit_->has_value());
  EXPECT_EQ((*this->exit_)->code, 3);
  EXPECT_EQ((*this->exit_)->output, "one\n");
  EXPECT_EQ((*this->exit_)->errors, "two\n");
  EXPECT_FALSE((*this->exit_)->timedOut);
  EXPECT_THAT(this->lines_, ::testing::UnorderedElementsAre("one", "two"));
}

TYPED_TEST_P(ChildProcessesContract, AMissingExecutableFailsInALaterTurn) {
  auto spec = this->world_.shell("");
  spec.executable = "/nonexistent/tool";
  EXPECT_EQ(this->start(std::move(spec))->pid(), 0);
  EXPECT_FALSE(this->exit_.has_value());
  ASSERT_TRUE(this->wait());
  EXPECT_FALSE(this->exit_->has_value());
}

TYPED_TEST_P(ChildProcessesContract, TheTimeLimitEndsTheChild) {
  auto spec = this->world_.shell(kHangScript);
  spec.timeLimit = 50ms;
  this->start(std::move(spec));
  ASSERT_TRUE(this->wait());
  ASSERT_TRUE(this->exit_->has_value());
  EXPECT_TRUE((*this->exit_)->timedOut);
  EXPECT_EQ((*this->exit_)->code, 128 + 15);
}

TYPED_TEST_P(ChildProcessesContract, KillingEndsTheChildAndLateKillsDoNothing) {
  const auto child = this->start(this->world_.shell(kHangScript));
  child->kill();
  ASSERT_TRUE(this->wait());
  ASSERT_TRUE(this->exit_->has_value());
  EXPECT_EQ((*this->exit_)->code, 128 + 9);
  EXPECT_FALSE((*this->exit_)->timedOut);
  child->kill();
}

REGISTER_TYPED_TEST_SUITE_P(ChildProcessesContract, TheEndBringsCodeOutputAndLinesInALaterTurn,
                            AMissingExecutableFailsInALaterTurn, TheTimeLimitEndsTheChild,
                            KillingEndsTheChildAndLateKillsDoNothing);

}  // namespace corvane::testing
