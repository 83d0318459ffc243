#include "core/policies/business_hours_gate.h"

#include "core/policies/calendar_days.h"
#include "support/test.h"

namespace corvane {
namespace {

const Calendar kBerlin = zone("Europe/Berlin");

Date at(const std::string& text) { return localTime(kBerlin, text); }

BusinessHoursGate gate(const std::optional<std::string>& start, const std::optional<std::string>& end) {
  return {start, end, kBerlin};
}

TEST(BusinessHoursGate, HoldsMomentsFromStartUpToTheEnd) {
  const std::tuple<const char*, const char*, const char*, bool, const char*> cases[] = {
      {"09:00", "17:00", "2026-11-18 08:59", false, "2026-11-18 17:00"},
      {"09:00", "17:00", "2026-11-18 09:00", true, "2026-11-18 17:00"},
      {"09:00", "17:00", "2026-11-18 16:59", true, "2026-11-18 17:00"},
      {"09:00", "17:00", "2026-11-18 17:00", false, "2026-11-19 17:00"},
      {"22:00", "06:00", "2026-11-18 23:30", true, "2026-11-19 06:00"},
      {"22:00", "06:00", "2026-11-19 05:59", true, "2026-11-19 06:00"},
      {"22:00", "06:00", "2026-11-19 06:00", false, "2026-11-20 06:00"},
      {"17:00", "00:00", "2026-11-18 23:59", true, "2026-11-19 00:00"},
      {"17:00", "00:00", "2026-11-19 00:00", false, "2026-11-20 00:00"},
      // The night of March 29 has no 02:00 to 03:00: a time in it moves an hour on.
      {"02:30", "10:00", "2026-03-29 03:15", false, "2026-03-29 10:00"},
      {"02:30", "10:00", "2026-03-29 03:30", true, "2026-03-29 10:00"},
      {"22:00", "02:30", "2026-03-29 03:29", true, "2026-03-29 03:30"},
      // The night of October 25 has 02:00 to 03:00 twice: the first one counts.
      {"22:00", "02:30", "2026-10-25 02:29", true, "2026-10-25 02:30"},
      {"22:00", "02:30", "2026-10-25 02:30", false, "2026-10-26 02:30"},
  };
  for (const auto& [start, end, now, within, nextEnd] : cases) {
    const auto g = gate(start, end);
    EXPECT_EQ(g.isWithinBusinessHours(at(now)), within) << start << " " << end << " " << now;
    EXPECT_EQ(g.nextWindowEnd(at(now)), at(nextEnd)) << start << " " << end << " " << now;
  }
  const auto secondHour = at("2026-10-25 02:29") + 1h;
  EXPECT_FALSE(gate("22:00", "02:30").isWithinBusinessHours(secondHour));
}

// Whatever the zone and the day: a moment is within exactly when the window's end lies less than its length ahead,
// and ends follow each other once a day.
TEST(BusinessHoursGate, EndsOnceEveryDayOfAYear) {
  for (const char* name : {"America/New_York", "Europe/Berlin", "UTC"}) {
    const auto calendar = zone(name);
    for (const auto& [start, end] : {std::pair("09:00", "17:00"), {"22:00", "06:00"}, {"02:30", "02:15"}}) {
      const BusinessHoursGate g(start, end, calendar);
      auto now = localTime(calendar, "2026-01-01 12:00");
      for (int day = 0; day < 365; ++day) {
        const auto windowEnd = g.nextWindowEnd(now);
        ASSERT_TRUE(windowEnd);
        ASSERT_GT(*windowEnd, now);
        ASSERT_LE(*windowEnd - now, 25h);
        ASSERT_TRUE(g.isWithinBusinessHours(*windowEnd - 1s));
        ASSERT_EQ(g.nextWindowEnd(*windowEnd - 1s), windowEnd);
        now = *windowEnd;
      }
    }
  }
}

TEST(BusinessHoursGate, IsDisabledWithoutTwoTimesAndEmptyWithEqualOnes) {
  for (const auto& g :
       {gate(std::nullopt, "17:00"), gate("09:00", std::nullopt), gate("", "17:00"), gate("09:00", "5 pm")}) {
    EXPECT_TRUE(g.isDisabled());
    EXPECT_FALSE(g.isWithinBusinessHours(at("2026-11-18 12:00")));
    EXPECT_FALSE(g.nextWindowEnd(at("2026-11-18 12:00")));
  }
  const auto empty = gate("09:00", "09:00");
  EXPECT_FALSE(empty.isDisabled());
  EXPECT_FALSE(empty.isWithinBusinessHours(at("2026-11-18 09:00")));
  EXPECT_FALSE(empty.nextWindowEnd(at("2026-11-18 08:00")));
}

TEST(BusinessHoursGate, MissesAnEnforcementThatFiredOutsideOnceBackInside) {
  const auto g = gate("09:00", "17:00");
  const auto inside = at("2026-11-19 10:00");
  EXPECT_TRUE(g.missedAfterHoursEnforcement(at("2026-11-18 20:00"), inside));
  EXPECT_FALSE(g.missedAfterHoursEnforcement(at("2026-11-19 09:30"), inside)) << "fired inside";
  EXPECT_FALSE(g.missedAfterHoursEnforcement(at("2026-11-18 20:00"), at("2026-11-18 21:00"))) << "still outside";
  EXPECT_FALSE(g.missedAfterHoursEnforcement(std::nullopt, inside));
  EXPECT_FALSE(g.missedAfterHoursEnforcement(at("2026-11-19 20:00"), inside)) << "the clock was set back";
  EXPECT_FALSE(gate(std::nullopt, std::nullopt).missedAfterHoursEnforcement(at("2026-11-18 20:00"), inside));
}

TEST(BusinessHoursGate, ReadsAndWritesTimesOfDay) {
  const std::pair<const char*, std::optional<int>> times[] = {
      {"00:00", 0},           {"09:05", 545},  {"9:05", 545},  {" 23:59\n", 1439}, {"24:00", {}},
      {"12:60", {}},          {"12:5", {}},    {"1200", {}},   {"", {}},           {":30", {}},
      {"-1:30", {}},          {"12:30pm", {}}, {"012:30", {}}, {"12:+5", {}},      {"12 :30", {}},
      {"99999999999:00", {}}, {"-0:30", {}},   {"+1:30", {}},  {"1:-0", {}}};
  for (const auto& [text, minutes] : times) EXPECT_EQ(BusinessHoursGate::parseMinutesOfDay(text), minutes) << text;
  for (int minutes = 0; minutes < 1440; ++minutes) {
    const auto text = BusinessHoursGate::formatMinutesOfDay(minutes);
    ASSERT_TRUE(text && text->size() == 5);
    ASSERT_EQ(BusinessHoursGate::parseMinutesOfDay(*text), minutes);
  }
  EXPECT_FALSE(BusinessHoursGate::formatMinutesOfDay(-1));
  EXPECT_FALSE(BusinessHoursGate::formatMinutesOfDay(1440));
}

}  // namespace
}  // namespace corvane
