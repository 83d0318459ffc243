// Settings, stored values and clocks that make no sense lead to the safe answer, told as diaries.
#include "simulation/simulation_fixture.h"

namespace corvane {
namespace {

struct BadInputDiaryTest : SimulationTest {
  BadInputDiaryTest() { plan.settings["DeadlineCountHard"] = PlistValue(1); }
};

TEST_F(BadInputDiaryTest, aDeadlineThatPassedBeforeTheStartIsToldBeforeItInstalls) {
  plan.settings["DeadlineDaysHard"] = PlistValue(1);
  plan.start = "2026-10-28 08:00";
  plan.state["HardDeferralDate"] = PlistValue(Date{});
  start();
  mac->runUntil("2026-10-28 12:00");
  expectDiary(forcedAt("Wed 28 Oct 09:00", "Wed 28 Oct 09:05", "Wed 28 Oct 09:08"));
}

TEST_F(BadInputDiaryTest, storedValuesOfTheWrongTypeCountAsAbsent) {
  plan.state = {{"NextAutoLaunch", PlistValue("soon")},
                {"HardDeferralCount", PlistValue("many")},
                {"HardDeferralDate", PlistValue(7)},
                {"CurrentPatchingStartDate", PlistValue("Monday")},
                {"NextCycleStartDate", PlistValue(true)},
                {"LastHardDeadlineFiredAt", PlistValue("never")},
                {"HardDeadlineDialogDismissedUntil", PlistValue(PlistArray{})}};
  plan.habits = {.answer = Habits::Answer::defers};
  start();
  mac->runUntil("2026-10-26 12:00");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
Mon 26 Oct 09:00 deferred for 1 hour
)" + forcedAt("Mon 26 Oct 09:01", "Mon 26 Oct 10:00", "Mon 26 Oct 10:03"));
  EXPECT_EQ(mac->log().count("seeding cadence anchor at 2026-10-26T00:00:00+01:00"), 1U);
}

}  // namespace
}  // namespace corvane
