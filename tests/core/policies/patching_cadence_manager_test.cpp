#include "core/policies/patching_cadence_manager.h"

#include "core/policies/calendar_days.h"
#include "core/preferences/configuration.h"
#include "support/test.h"

namespace corvane {
namespace {

const std::string kZones[] = {"America/New_York", "Europe/Berlin", "UTC"};

PatchingCadenceSettings weekly(std::int64_t weekday, std::int64_t days) {
  return {.patchWeekStartDay = weekday, .daysUntilReset = days};
}

PatchingCadenceSettings monthly(OrdinalValue ordinal, WeekdayIndex weekday) {
  return {.monthlyPatchingCadenceEnabled = true,
          .monthlyPatchingCadenceOrdinalValue = ordinal,
          .monthlyPatchingCadenceWeekdayIndex = weekday};
}

std::vector<PatchingCadenceSettings> everyShape() {
  return {weekly(2, 7),
          weekly(1, 14),
          weekly(7, 1),
          weekly(4, 10),
          monthly(OrdinalValue::second, WeekdayIndex::tuesday),
          monthly(OrdinalValue::fifth, WeekdayIndex::sunday),
          monthly(OrdinalValue::final, WeekdayIndex::friday)};
}

struct Fixture {
  Calendar calendar = zone("Europe/Berlin");
  PatchingCadenceManager manager;

  explicit Fixture(PatchingCadenceSettings settings) : manager(settings, calendar) {}
  [[nodiscard]] Date at(const std::string& text) const { return localTime(calendar, text); }
  [[nodiscard]] CadenceState cycle(const std::string& start, const std::string& next) const {
    return {.currentPatchingStartDate = at(start), .nextCycleStartDate = at(next)};
  }
};

// The usual shapes are looked at every hour; the others every fifth, which comes round to each hour of the day.
Duration stepFor(const PatchingCadenceSettings& settings) {
  const bool usual = settings.monthlyPatchingCadenceEnabled
                         ? settings.monthlyPatchingCadenceOrdinalValue == OrdinalValue::second
                         : settings.daysUntilReset == 7;
  return usual ? 1h : 5h;
}

// The cycle around each hour of two years, with their clock changes, holds that hour, begins and ends with a
// day, and is the one that the machine would have rolled into by itself.
TEST(PatchingCadenceManager, HoldsEveryHourOfTwoYears) {
  for (const auto& name : kZones) {
    const auto calendar = zone(name);
    for (const auto& settings : everyShape()) {
      const PatchingCadenceManager manager(settings, calendar);
      const auto first = localTime(calendar, "2026-01-01");
      auto rolled = manager.armedState(first);
      for (auto now = first; now < first + std::chrono::days(730); now += stepFor(settings)) {
        for (const auto& state : {manager.armedState(now), manager.freshInstallCycle(now)}) {
          ASSERT_LE(*state.currentPatchingStartDate, now) << name;
          ASSERT_LT(now, *state.nextCycleStartDate) << name;
          ASSERT_TRUE(calendar.isStartOfDay(*state.nextCycleStartDate));
          ASSERT_FALSE(manager.isAnchorMalformed(state));
          ASSERT_FALSE(manager.shouldResetCycle(state, now));
        }
        if (manager.shouldResetCycle(rolled, now)) {
          const auto end = *rolled.nextCycleStartDate;
          rolled = manager.rolledForwardCycle(rolled, now);
          ASSERT_EQ(rolled.currentPatchingStartDate, end) << "a machine that never sleeps misses no cycle";
        }
        ASSERT_LE(*rolled.currentPatchingStartDate, now);
        ASSERT_LT(now, *rolled.nextCycleStartDate);
      }
    }
  }
}

TEST(PatchingCadenceManager, ArmsTheMostRecentConfiguredStart) {
  using enum OrdinalValue;
  using enum WeekdayIndex;
  const std::tuple<PatchingCadenceSettings, const char*, const char*, const char*> cases[] = {
      {weekly(2, 7), "2026-11-22 21:00", "2026-11-16", "2026-11-23"},
      {weekly(1, 7), "2026-11-22 00:00", "2026-11-22", "2026-11-29"},
      {weekly(2, 14), "2026-11-22 21:00", "2026-11-16", "2026-11-30"},
      {weekly(2, 3), "2026-11-22 21:00", "2026-11-22", "2026-11-25"},
      {weekly(99, 0), "2026-11-22 21:00", "2026-11-16", "2026-11-23"},
      {monthly(second, tuesday), "2026-11-10 00:00", "2026-11-10", "2026-12-08"},
      {monthly(second, tuesday), "2026-11-09 23:59", "2026-10-13", "2026-11-10"},
      {monthly(second, tuesday), "2027-01-01 00:00", "2026-12-08", "2027-01-12"},
      {monthly(fifth, sunday), "2026-11-29 12:00", "2026-11-29", "2026-12-27"},  // four Sundays: the last
      {monthly(fifth, monday), "2026-12-01 12:00", "2026-11-30", "2026-12-28"},
      {monthly(OrdinalValue::final, friday), "2026-02-28 12:00", "2026-02-27", "2026-03-27"},
      {monthly(first, monday), "2026-06-01 00:00", "2026-06-01", "2026-07-06"},
  };
  for (const auto& [settings, now, start, next] : cases) {
    const Fixture f(settings);
    EXPECT_EQ(f.manager.armedState(f.at(now)), f.cycle(start, next)) << now;
  }
}

TEST(PatchingCadenceManager, GivesTheFirstCycleOfAMachineTheAnchorOfItsFleet) {
  const Fixture f(weekly(2, 14));
  EXPECT_EQ(f.manager.freshInstallCycle(f.at("2026-11-20 15:00")), f.cycle("2026-11-16", "2026-11-30"));
  EXPECT_EQ(f.manager.freshInstallCycle(f.at("2026-11-23 15:00")), f.cycle("2026-11-23", "2026-12-07"));
  const Fixture daily(weekly(2, 1));
  EXPECT_EQ(daily.manager.freshInstallCycle(daily.at("2026-11-20 15:00")), daily.cycle("2026-11-20", "2026-11-21"));
}

TEST(PatchingCadenceManager, RollsForwardInWholeSteps) {
  using enum OrdinalValue;
  using enum WeekdayIndex;
  const std::tuple<const char*, PatchingCadenceSettings, const char*, const char*, const char*, const char*,
                   const char*>
      cases[] = {
          {"in time", weekly(2, 7), "2026-11-16", "2026-11-23", "2026-11-23 00:00", "2026-11-23", "2026-11-30"},
          {"slept for 24 days", weekly(2, 14), "2026-11-02", "2026-11-16", "2026-12-10 09:00", "2026-11-30",
           "2026-12-14"},
          {"over a clock change", weekly(1, 7), "2026-10-18", "2026-10-25", "2026-10-25 23:00", "2026-10-25",
           "2026-11-01"},
          {"not due yet", weekly(2, 7), "2026-11-16", "2026-11-23", "2026-11-20 00:00", "2026-11-16", "2026-11-23"},
          {"weekday changed", weekly(4, 7), "2026-11-16", "2026-11-23", "2026-11-23 08:00", "2026-11-23", "2026-11-25"},
          {"weekday changed, slept", weekly(4, 7), "2026-11-16", "2026-11-23", "2026-11-27 08:00", "2026-11-25",
           "2026-12-02"},
          {"length that drifts", weekly(2, 10), "2026-11-16", "2026-11-26", "2026-11-26 08:00", "2026-11-26",
           "2026-12-06"},
          {"monthly", monthly(second, tuesday), "2026-10-13", "2026-11-10", "2026-11-22 08:00", "2026-11-10",
           "2026-12-08"},
          {"now monthly", monthly(second, tuesday), "2026-11-09", "2026-11-16", "2026-11-16 08:00", "2026-11-16",
           "2026-12-08"},
      };
  for (const auto& [what, settings, start, end, now, newStart, newEnd] : cases) {
    const Fixture f(settings);
    auto state = f.cycle(start, end);
    state.lastPatchingCompletionDate = f.at("2026-11-17 10:00");
    auto expected = f.cycle(newStart, newEnd);
    expected.lastPatchingCompletionDate = state.lastPatchingCompletionDate;
    EXPECT_EQ(f.manager.rolledForwardCycle(state, f.at(now)), expected) << what;
  }
}

TEST(PatchingCadenceManager, IsCompleteFromACompletionInTheCycleToItsEnd) {
  const Fixture f(weekly(2, 7));
  const auto completed = [&](const char* at) {
    auto state = f.cycle("2026-11-16", "2026-11-23");
    state.lastPatchingCompletionDate = f.at(at);
    return state;
  };
  const auto complete = [&](const CadenceState& state, const char* now) {
    return f.manager.isPatchingCompleteForCurrentCycle(state, f.at(now));
  };
  EXPECT_TRUE(complete(completed("2026-11-16 00:00"), "2026-11-22 23:59"));
  EXPECT_FALSE(complete(completed("2026-11-15 23:59"), "2026-11-20"));
  EXPECT_FALSE(complete(completed("2026-11-17 10:00"), "2026-11-23 00:00"));
  EXPECT_FALSE(complete(f.cycle("2026-11-16", "2026-11-23"), "2026-11-20"));

  auto endless = completed("2026-11-17 10:00");
  endless.nextCycleStartDate.reset();
  EXPECT_TRUE(complete(endless, "2026-11-22 23:59"));
  EXPECT_FALSE(complete(endless, "2026-11-23 00:00")) << "a missing end counts from the start";
  endless.currentPatchingStartDate.reset();
  EXPECT_FALSE(complete(endless, "2026-11-18"));
}

TEST(PatchingCadenceManager, RecordsACompletionAndTheCycleAroundIt) {
  const Fixture f(weekly(2, 7));
  const auto now = f.at("2026-11-18 09:30");
  const auto existing = f.cycle("2026-11-16", "2026-11-23");
  auto recorded = f.manager.recordSuccessfulPatchRun(now, existing);
  EXPECT_EQ(recorded.lastPatchingCompletionDate, now);
  recorded.lastPatchingCompletionDate.reset();
  EXPECT_EQ(recorded, existing);

  const auto first = f.manager.recordSuccessfulPatchRun(now, {});
  EXPECT_TRUE(f.manager.isPatchingCompleteForCurrentCycle(first, now)) << "also on a machine without a cycle";
  EXPECT_EQ(first.nextCycleStartDate, f.at("2026-11-23"));
}

TEST(PatchingCadenceManager, ToleratesStatesThatAreNone) {
  const Fixture f(weekly(2, 7));
  const auto now = f.at("2026-11-18 09:30");
  EXPECT_FALSE(f.manager.shouldResetCycle({}, now));
  EXPECT_FALSE(f.manager.isAnchorMalformed({}));
  EXPECT_TRUE(f.manager.isAnchorMalformed({.currentPatchingStartDate = f.at("2026-11-16 14:30")}));
  EXPECT_EQ(f.manager.rolledForwardCycle({}, now), f.cycle("2026-11-16", "2026-11-23"));
  EXPECT_EQ(f.manager.nextCycleStart(f.at("2026-11-16 14:30")), f.at("2026-11-23"));
}

TEST(PatchingCadenceManager, KeepsTheOptionsThatEndBeforeTheEndOfThePatchingDay) {
  const auto calendar = zone("Europe/Berlin");
  const std::vector<std::int64_t> options{240, -1, 60, 59, 30};
  const auto allowed = [&](const char* now, const std::optional<std::string>& end) {
    return PatchingCadenceManager::allowedDeferralMinutesForDeadlineDay(localTime(calendar, now), options, end,
                                                                        calendar);
  };
  using List = std::vector<std::int64_t>;
  EXPECT_EQ(allowed("2026-11-18 16:00", "17:00"), (List{-1, 59, 30}));
  EXPECT_EQ(allowed("2026-11-18 17:00", "17:00"), List{-1});
  EXPECT_EQ(allowed("2026-11-18 16:00", std::nullopt), options);
  EXPECT_EQ(allowed("2026-11-18 16:00", "five"), options);
}

TEST(PatchingCadenceManager, TakesItsShapeFromTheConfiguration) {
  CorvaneConfiguration configuration;
  configuration.monthlyPatchingCadenceEnabled = true;
  configuration.monthlyPatchingCadenceOrdinalValue = OrdinalValue::third;
  configuration.monthlyPatchingCadenceWeekdayIndex = WeekdayIndex::wednesday;
  const Fixture f(weekly(1, 7));
  const PatchingCadenceManager manager(configuration, f.calendar);
  EXPECT_EQ(manager.armedState(f.at("2026-11-20")), f.cycle("2026-11-18", "2026-12-16"));
}

}  // namespace
}  // namespace corvane
