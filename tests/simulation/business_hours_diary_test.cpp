// When a reached deadline installs, by business hours and the zone's clock changes, told as diaries.
#include "simulation/simulation_fixture.h"

namespace corvane {
namespace {

struct BusinessHoursDiaryTest : SimulationTest {
  BusinessHoursDiaryTest() { plan.settings["DeadlineCountHard"] = PlistValue(0); }
};

TEST_F(BusinessHoursDiaryTest, whatIsArmedIsKeptUpToTheEndAndBroughtForwardBehindIt) {
  const std::tuple<std::chrono::hours, const char*, const char*> rows[] = {
      {16h, "Mon 26 Oct 16:00", "Mon 26 Oct 16:03"},
      {17h, "Mon 26 Oct 17:00", "Mon 26 Oct 17:03"},
      {19h, "Mon 26 Oct 17:00", "Mon 26 Oct 17:03"}};
  hours("09:00", "17:00");
  plan.checkedBefore = true;
  plan.start = "2026-10-26 12:00";
  for (const auto& [armed, forced, installed] : rows) {
    plan.state["NextAutoLaunch"] = PlistValue(Calendar::named(plan.zone)->at(std::chrono::year(2026) / 10 / 26, armed));
    start();
    mac->runUntil("2026-10-26 20:00");
    expectDiary(forcedAt("Mon 26 Oct 12:00", forced, installed));
    EXPECT_EQ(mac->brokenRules(), std::vector<std::string>());
  }
}

TEST_F(BusinessHoursDiaryTest, aWindowOverMidnightEndsInTheMorningOnEveryKindOfNight) {
  const struct {
    const char* zone;
    const char* from;
    const char* to;
    const char* start;
    const char* asked;
    const char* until;
    const char* diaryOfAsked;
    const char* diaryOfEnd;
    const char* diaryOfInstalled;
  } nights[] = {
      {"Europe/Berlin", "22:00", "06:00", "2026-10-26 08:00", "23:30", "2026-10-27 12:00", "Mon 26 Oct 23:30",
       "Tue 27 Oct 06:00", "Tue 27 Oct 06:03"},
      // An hour more, and an hour less with a time that is skipped.
      {"Europe/Berlin", "22:00", "06:00", "2026-10-24 20:00", "23:00", "2026-10-25 12:00", "Sat 24 Oct 23:00",
       "Sun 25 Oct 06:00", "Sun 25 Oct 06:03"},
      {"Europe/Berlin", "22:00", "02:30", "2026-03-28 20:00", "23:00", "2026-03-29 12:00", "Sat 28 Mar 23:00",
       "Sun 29 Mar 03:30", "Sun 29 Mar 03:33"},
      // Of a time that comes twice the first counts.
      {"America/New_York", "18:00", "01:30", "2026-10-31 20:00", "23:00", "2026-11-01 01:40", "Sat 31 Oct 23:00",
       "Sun 01 Nov 01:30", "Sun 01 Nov 01:33"},
  };
  for (const auto& night : nights) {
    SCOPED_TRACE(night.start);
    plan.zone = night.zone;
    hours(night.from, night.to);
    plan.start = night.start;
    plan.dailyCheck = night.asked;
    start();
    mac->runUntil(night.until);
    expectDiary(forcedAt(night.diaryOfAsked, night.diaryOfEnd, night.diaryOfInstalled));
    EXPECT_EQ(mac->brokenRules(), std::vector<std::string>());
  }
}

TEST_F(BusinessHoursDiaryTest, aLimitLoweredUnderAnOpenPromptRefusesTheDeferral) {
  plan.settings["DeadlineCountHard"] = PlistValue(2);
  const auto expectRefusal = [&](const char* forced, const char* installed) {
    start();
    mac->runUntil("2026-10-26 09:02");
    mac->set("DeadlineCountHard", PlistValue(0));
    mac->run(1s);
    mac->person().defer();
    mac->runUntil("2026-10-27 08:00");
    expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
)" + forcedAt("Mon 26 Oct 09:02", forced, installed));
    EXPECT_EQ(mac->brokenRules(), std::vector<std::string>());
  };
  expectRefusal("Mon 26 Oct 09:07", "Mon 26 Oct 09:10");
  hours("09:00", "17:00");
  expectRefusal("Mon 26 Oct 17:00", "Mon 26 Oct 17:03");
}

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
