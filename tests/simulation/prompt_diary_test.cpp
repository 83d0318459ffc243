// What becomes of a prompt while the helper is slow, wrong or busy and the settings change under it, told as diaries.
#include "simulation/simulation_fixture.h"

namespace corvane {
namespace {

struct PromptDiaryTest : SimulationTest {
  PromptDiaryTest() { plan.settings["DeadlineCountHard"] = PlistValue(2); }
};

// What cannot be looked up is an alert, not pending: it leaves the rounds that begin after its failure, and returns
// with the check that answers again.
TEST_F(PromptDiaryTest, aCheckThatFailsForEverHoldsUpNeitherTheRoundsNorTheCycle) {
  plan.habits = {.answer = Habits::Answer::defers};
  start();
  mac->runUntil("2026-10-26 09:30");
  mac->helper().behaviour.failingChecks = {"bellows"};
  mac->runUntil("2026-10-27 08:00");
  EXPECT_EQ(mac->model().fields().inventory.alertCount, 1);
  mac->helper().behaviour.failingChecks.clear();
  mac->person().habits.answer = Habits::Answer::ignores;
  mac->runUntil("2026-11-02 00:04");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
Mon 26 Oct 09:00 deferred for 1 hour
Mon 26 Oct 10:00 asked: 3 applications
Mon 26 Oct 10:01 deferred for 1 hour
Mon 26 Oct 10:01 required: 2 applications by Mon 26 Oct 11:01
Mon 26 Oct 11:01 forced: anvil, crucible
Mon 26 Oct 11:03 installed anvil, crucible
Mon 26 Oct 11:03 the cycle is complete
Mon 02 Nov 00:00 a new cycle
Mon 02 Nov 00:00 asked: 1 application
)");
}

TEST_F(PromptDiaryTest, installNowTwiceWhileACheckRunsInstallsOnce) {
  plan.settings["DeadlineCountHard"] = PlistValue(0);
  plan.settings["DialogTimeoutDeferral"] = PlistValue(3600);
  start();
  mac->runUntil("2026-10-26 09:01");
  mac->helper().behaviour.checkTakes = 120s;
  mac->model().checkForUpdates();
  mac->run(10s);
  mac->person().install();
  mac->run(10s);
  EXPECT_EQ(page().countdown, "Making sure that these are the newest versions…");
  EXPECT_FALSE(page().install.enabled);
  mac->person().install();
  mac->runUntil("2026-10-26 12:00");
  expectDiary(R"(Mon 26 Oct 09:00 required: 3 applications by Mon 26 Oct 10:00
)" + allInstalled("Mon 26 Oct 09:05", "Mon 26 Oct 09:08", "installing"));
  EXPECT_EQ(mac->log().count("Install Now will run when"), 2U);
}

TEST_F(PromptDiaryTest, aForcedInstallWaitsForAHelperThatAnswersLate) {
  plan.settings["DeadlineCountHard"] = PlistValue(0);
  plan.settings["DialogTimeoutDeferral"] = PlistValue(600);
  start();
  mac->runUntil("2026-10-26 09:01");
  mac->helper().behaviour.checkTakes = 20min;
  mac->runUntil("2026-10-26 12:00");
  expectDiary(R"(Mon 26 Oct 09:00 required: 3 applications by Mon 26 Oct 09:10
)" + allInstalled("Mon 26 Oct 09:30", "Mon 26 Oct 09:33"));
}

TEST_F(PromptDiaryTest, anInstallThatFailsForOneLeavesTheCycleOpenAndAsksAgain) {
  plan.habits = {.answer = Habits::Answer::installs};
  start();
  mac->helper().behaviour.failingInstalls = {"crucible"};
  mac->runUntil("2026-10-26 10:00");
  mac->helper().behaviour.failingInstalls.clear();
  mac->runUntil("2026-10-27 12:00");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
Mon 26 Oct 09:00 installing: anvil, bellows, crucible
Mon 26 Oct 09:03 installed anvil, bellows
Mon 26 Oct 09:03 failed: crucible
Mon 26 Oct 10:03 asked: 1 application
Mon 26 Oct 10:04 installing: crucible
Mon 26 Oct 10:05 installed crucible
Mon 26 Oct 10:05 the cycle is complete
)");
}

TEST_F(PromptDiaryTest, settingsThatChangeWhileThePromptIsOpenHoldAtItsEnd) {
  start();
  mac->runUntil("2026-10-26 09:02");
  mac->set("DialogTimeoutDeferralAction", PlistValue("continue"));
  mac->run(1s);
  EXPECT_EQ(page().countdown.substr(0, 43), "Corvane will automatically install updates ");
  mac->runUntil("2026-10-26 10:00");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
)" + allInstalled("Mon 26 Oct 09:05", "Mon 26 Oct 09:08", "nobody answered, installing"));
}

TEST_F(PromptDiaryTest, businessHoursSetUnderAHardPromptLeaveItsMomentAsItWasTold) {
  plan.settings["DeadlineCountHard"] = PlistValue(0);
  plan.settings["DialogTimeoutDeferral"] = PlistValue(1800);
  start();
  mac->runUntil("2026-10-26 09:02");
  mac->set("BusinessHoursStartTime", PlistValue("09:00"));
  mac->set("BusinessHoursEndTime", PlistValue("17:00"));
  mac->runUntil("2026-10-26 18:00");
  expectDiary(forcedAt("Mon 26 Oct 09:00", "Mon 26 Oct 09:30", "Mon 26 Oct 09:33"));
}

}  // namespace
}  // namespace corvane
