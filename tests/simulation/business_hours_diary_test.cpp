// When a reached deadline installs, by business hours and the zone's clock changes, told as diaries.
#include "simulation/simulation_fixture.h"

namespace corvane {
namespace {

struct BusinessHoursDiaryTest : SimulationTest {
  BusinessHoursDiaryTest() { plan.settings["DeadlineCountHard"] = PlistValue(0); }
};

TEST_F(BusinessHoursDiaryTest, aDeferralWithNoLengthLeftBeforeTheDateWaitsForTheEnd) {
  plan.settings = {{"DeadlineDaysHard", PlistValue(1)}};
  hours("22:00", "06:00");
  plan.dailyCheck = "23:30";
  plan.habits = {.answer = Habits::Answer::defers};
  start();
  mac->runUntil("2026-10-26 23:59");
  EXPECT_EQ(mac->preferences().readLastHardDeadlineFiredAt(), std::nullopt);
  mac->runUntil("2026-10-27 08:00");
  expectDiary(R"(Mon 26 Oct 23:30 asked: 3 applications
)" + forcedAt("Mon 26 Oct 23:30", "Tue 27 Oct 06:00", "Tue 27 Oct 06:03"));
}

TEST_F(BusinessHoursDiaryTest, aHardPromptMissedAsleepCountsDownAnHourBeItOpenOrClosed) {
  hours("09:00", "17:00");
  plan.settings["HardDeadlineDialogAllowClose"] = PlistValue(true);
  plan.dailyCheck = "20:00";
  const std::string asked = "Mon 26 Oct 20:00 required: 3 applications by Mon 26 Oct 20:05\n";
  for (const bool closed : {false, true}) {
    SCOPED_TRACE(closed ? "closed" : "open");
    plan.habits.answer = closed ? Habits::Answer::closes : Habits::Answer::ignores;
    start();
    mac->runUntil("2026-10-26 20:01");
    mac->person().habits.answer = Habits::Answer::ignores;
    mac->sleepUntil(mac->at("2026-10-27 09:30"));
    mac->runUntil("2026-10-27 18:00");
    expectDiary(asked + (closed ? "Mon 26 Oct 20:00 closed the panel\n" +
                                      forcedAt("Tue 27 Oct 09:30", "Tue 27 Oct 10:30", "Tue 27 Oct 10:33")
                                : allInstalled("Tue 27 Oct 10:30", "Tue 27 Oct 10:33")));
    EXPECT_EQ(mac->brokenRules(), std::vector<std::string>());
  }
}

}  // namespace
}  // namespace corvane
