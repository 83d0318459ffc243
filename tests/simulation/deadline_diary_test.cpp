// How the limits of deferrals play out over days, told as diaries.
#include "simulation/simulation_fixture.h"

namespace corvane {
namespace {

struct DeadlineDiaryTest : SimulationTest {
  static constexpr Habits kOfficeDefers{
      .answer = Habits::Answer::defers, .comes = 9 * 60, .leaves = 17 * 60, .weekends = false};
};

TEST_F(DeadlineDiaryTest, aFortnightOfAPersonWhoAlwaysDefersUnderACountLimit) {
  plan.settings["DeadlineCountHard"] = PlistValue(1);
  plan.habits = kOfficeDefers;
  plan.habits.minutes = 1440;
  start();
  mac->runUntil("2026-11-02 08:00");
  mac->release("anvil", "3.0");
  mac->runUntil("2026-11-08 23:00");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
Mon 26 Oct 09:00 deferred for 1 day
)" + forcedAt("Mon 26 Oct 09:01", "Tue 27 Oct 09:00", "Tue 27 Oct 09:03") +
              R"(Mon 02 Nov 00:00 a new cycle
Mon 02 Nov 09:00 asked: 1 application
Mon 02 Nov 09:00 deferred for 1 day
Mon 02 Nov 09:01 required: 1 application by Tue 03 Nov 09:00
Tue 03 Nov 09:00 forced: anvil
Tue 03 Nov 09:01 installed anvil
Tue 03 Nov 09:01 the cycle is complete
)");
}

TEST_F(DeadlineDiaryTest, theDeadlineDateEndsTheDeferralsWhateverTheCount) {
  plan.settings["DeadlineDaysHard"] = PlistValue(1);
  plan.habits = {.answer = Habits::Answer::defers, .minutes = 240};
  plan.dailyCheck = "17:00";
  start();
  mac->runUntil("2026-10-27 09:00");
  expectDiary(R"(Mon 26 Oct 17:00 asked: 3 applications
Mon 26 Oct 17:00 deferred for 4 hours
Mon 26 Oct 21:00 asked: 3 applications
Mon 26 Oct 21:01 deferred for 1 hour
Mon 26 Oct 22:01 asked: 3 applications
Mon 26 Oct 22:01 deferred for 1 hour
Mon 26 Oct 23:01 asked: 3 applications
)" + forcedAt("Mon 26 Oct 23:02", "Mon 26 Oct 23:07", "Mon 26 Oct 23:10"));
}

TEST_F(DeadlineDiaryTest, ofBothLimitsTheOneThatComesFirstCounts) {
  plan.settings["DeadlineDaysHard"] = PlistValue(1);
  plan.settings["DeadlineCountHard"] = PlistValue(2);
  plan.habits = {.answer = Habits::Answer::defers, .minutes = 120};
  start();
  mac->runUntil("2026-10-26 18:00");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
Mon 26 Oct 09:00 deferred for 2 hours
Mon 26 Oct 11:00 asked: 3 applications
Mon 26 Oct 11:01 deferred for 2 hours
)" + forcedAt("Mon 26 Oct 11:01", "Mon 26 Oct 13:01", "Mon 26 Oct 13:04"));
}

TEST_F(DeadlineDiaryTest, whoeverInstallsAtOnceIsAskedOnceACycle) {
  plan.settings["DeadlineCountHard"] = PlistValue(2);
  plan.habits = {.answer = Habits::Answer::installs};
  start();
  mac->runUntil("2026-10-28 12:00");
  mac->release("bellows", "3.0");
  mac->runUntil("2026-11-03 12:00");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
Mon 26 Oct 09:00 installing: anvil, bellows, crucible
Mon 26 Oct 09:03 installed anvil, bellows, crucible
Mon 26 Oct 09:03 the cycle is complete
Mon 02 Nov 00:00 a new cycle
Mon 02 Nov 00:00 asked: 1 application
Mon 02 Nov 00:01 installing: bellows
Mon 02 Nov 00:02 installed bellows
Mon 02 Nov 00:02 the cycle is complete
)");
}

TEST_F(DeadlineDiaryTest, whoeverIgnoresThePromptDefersUntilTheLimitAndIsUpdatedThen) {
  plan.settings["DeadlineCountHard"] = PlistValue(2);
  start();
  mac->runUntil("2026-10-26 18:00");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
Mon 26 Oct 09:05 nobody answered: deferred for 1 hour
Mon 26 Oct 10:05 asked: 3 applications
Mon 26 Oct 10:10 nobody answered: deferred for 1 hour
)" + forcedAt("Mon 26 Oct 10:10", "Mon 26 Oct 11:10", "Mon 26 Oct 11:13"));
}

TEST_F(DeadlineDiaryTest, aClosedPanelDefersNothingAndComesBackWithTheNextCheck) {
  plan.settings["DeadlineCountHard"] = PlistValue(2);
  plan.habits = {.answer = Habits::Answer::closes};
  start();
  mac->runUntil("2026-10-28 08:00");
  expectDiary(R"(Mon 26 Oct 09:00 asked: 3 applications
Mon 26 Oct 09:00 closed the panel
Tue 27 Oct 09:00 asked: 3 applications
Tue 27 Oct 09:00 closed the panel
)");
  EXPECT_EQ(mac->preferences().readDeferralInfo().hardDeferralCount, 0);
}

TEST_F(DeadlineDiaryTest, onAggressivePatchDaysTheHardPromptOffersOnlyWhatEndsBeforePatching) {
  plan.settings["DeadlineCountHard"] = PlistValue(0);
  plan.settings["AggressivePatchDayDeferral"] = PlistValue(true);
  plan.settings["PatchingEndTime"] = PlistValue("11:30");
  start();
  mac->runUntil("2026-10-26 09:01");
  EXPECT_EQ(mac->model().availableDeferralOptions(), (std::vector<std::int64_t>{60, 120}));
  EXPECT_FALSE(page().defer.visible);
  mac->runUntil("2026-10-26 10:00");
  expectDiary(forcedAt("Mon 26 Oct 09:00", "Mon 26 Oct 09:05", "Mon 26 Oct 09:08"));
}

}  // namespace
}  // namespace corvane
