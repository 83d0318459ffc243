#include "workflow/operation_gate.h"

#include "platform/scripted/virtual_time.h"
#include "support/test.h"

namespace corvane {
namespace {

struct OperationGateTest : testing::Test {
  VirtualMachine time;
  GateFields fields;
  OperationGate gate{time.main(), fields, [] {}};
  std::string ran;
  void queue(char name) {
    gate.whenIdle([this, name] { ran += name; });
  }
};

TEST_F(OperationGateTest, idleWorkWaitsForBothFlagsAndRunsInOrderInALaterTurn) {
  gate.setPatching(true);
  gate.setLoading(true);
  queue('a');
  queue('b');
  gate.setPatching(false);
  time.runUntilIdle();
  EXPECT_EQ(ran, "");
  gate.setLoading(false);
  EXPECT_EQ(ran, "");
  time.runUntilIdle();
  EXPECT_EQ(ran, "ab");
}

TEST_F(OperationGateTest, workThatSetsTheGateStopsTheDrainUntilItIsIdleAgain) {
  gate.setPatching(true);
  gate.whenIdle([this] { gate.setLoading(true); });
  queue('b');
  gate.setPatching(false);
  time.runUntilIdle();
  EXPECT_EQ(ran, "");
  gate.setLoading(false);
  time.runUntilIdle();
  EXPECT_EQ(ran, "b");
}

TEST_F(OperationGateTest, aGateTakenBeforeTheDrainRunsKeepsTheWorkWaiting) {
  queue('a');
  gate.setLoading(true);
  time.runUntilIdle();
  EXPECT_EQ(ran, "");
  gate.setLoading(false);
  time.runUntilIdle();
  EXPECT_EQ(ran, "a");
}

TEST_F(OperationGateTest, anUnansweredRunKeepsTheGateThoughItsFlagWasCleared) {
  gate.ownRunStarted();
  gate.setPatching(true);
  gate.setPatching(false);
  EXPECT_TRUE(gate.busy());
  gate.nowOrWhenIdle([this] { ran += 'a'; });
  time.runUntilIdle();
  EXPECT_EQ(ran, "");
  gate.ownRunAnswered();
  time.runUntilIdle();
  EXPECT_EQ(ran, "a");
  gate.nowOrWhenIdle([this] { ran += 'b'; });
  EXPECT_EQ(ran, "ab") << "an idle gate runs it within the turn";
}

}  // namespace
}  // namespace corvane
