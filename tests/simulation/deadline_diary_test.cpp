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

}  // namespace
}  // namespace corvane
