// The patch cycle: when it starts, when the next one starts, whether it is complete. Reads and writes no
// store; the stored state comes in and goes out as a value.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "base/date.h"
#include "core/records/deferral_records.h"
#include "core/records/enumerations.h"

namespace corvane {

struct CorvaneConfiguration;

// The settings that shape a cycle. Values out of range get the safe answer: a week start day that is none is
// Monday, fewer than 1 day until reset is 7, more than 366 is 366.
struct PatchingCadenceSettings {
  std::int64_t patchWeekStartDay = 2;  // 1 for Sunday to 7 for Saturday
  std::int64_t daysUntilReset = 7;
  bool monthlyPatchingCadenceEnabled = false;
  OrdinalValue monthlyPatchingCadenceOrdinalValue = OrdinalValue::first;
  WeekdayIndex monthlyPatchingCadenceWeekdayIndex = WeekdayIndex::monday;
};

// A value; any thread. A cycle is the span from currentPatchingStartDate up to, but not including,
// nextCycleStartDate; both are at the start of a day in `calendar`.
//
// Weekly: a cycle starts on the chosen weekday and lasts `daysUntilReset` calendar days; cycles follow each
// other in whole steps, so every other week stays every other week however long the machine slept. With a
// length that is no number of weeks the starts drift from the weekday, as asked for.
// Monthly: a cycle starts on the chosen weekday of the month and ends at the next month's; a fifth weekday
// that a month does not have is its last.
class PatchingCadenceManager {
 public:
  using CadenceState = corvane::CadenceState;

  PatchingCadenceManager(PatchingCadenceSettings settings, Calendar calendar);
  PatchingCadenceManager(const CorvaneConfiguration& configuration, Calendar calendar);

  [[nodiscard]] const Calendar& calendar() const { return calendar_; }

  // The first cycle of a machine: the one that the settings give, as if it had been there since its start, so
  // that all machines of a fleet share their anchors and day deadlines.
  [[nodiscard]] CadenceState freshInstallCycle(Date now) const { return armedState(now); }

  // The start of the cycle that follows one begun at `date`; always later than `date`.
  [[nodiscard]] Date nextCycleStart(Date date) const;

  // The cycle by the settings alone: the latest configured start not after `now`, and the next one. Nothing
  // is complete in it.
  [[nodiscard]] CadenceState armedState(Date now) const;

  // The stored next start, or else the one that follows from the start. Absent without either.
  [[nodiscard]] std::optional<Date> endOf(const CadenceState& state) const;

  // The cycle has reached its end. A missing next start counts from the start; without a start there is no
  // cycle to reset.
  [[nodiscard]] bool shouldResetCycle(const CadenceState& state, Date now) const;

  // The cycle that holds `now`, in whole steps behind `state`; the last completion stays on record. A state
  // without a start gives the armed one. When the settings were changed meanwhile, the cycle starts where the
  // last one ended and lasts to the next configured start, so that its deadlines are not over when it begins.
  [[nodiscard]] CadenceState rolledForwardCycle(const CadenceState& state, Date now) const;

  // The start is not at the start of a day. False without a start.
  [[nodiscard]] bool isAnchorMalformed(const CadenceState& state) const;

  // The last completion is not before the cycle's start, and the next cycle has not come.
  [[nodiscard]] bool isPatchingCompleteForCurrentCycle(const CadenceState& state, Date now) const;

  // `existing` with the completion, and with a cycle around it when none was on record.
  [[nodiscard]] CadenceState recordSuccessfulPatchRun(Date completedAt, const CadenceState& existing) const;

  // The options, in their order, that end before `patchingEndTime` ("HH:mm") on the day of `now`. All of
  // them when the time is absent or none.
  [[nodiscard]] static std::vector<std::int64_t> allowedDeferralMinutesForDeadlineDay(
      Date now, std::span<const std::int64_t> options, const std::optional<std::string>& patchingEndTime,
      const Calendar& calendar);

 private:
  [[nodiscard]] Date startOn(std::chrono::sys_days day) const;
  [[nodiscard]] std::chrono::sys_days dayOf(Date date) const;
  [[nodiscard]] std::chrono::sys_days monthlyStart(std::chrono::year_month month) const;
  // Of the configured starts: the latest not after the date, and the first after it.
  [[nodiscard]] Date latestStart(Date date) const;
  [[nodiscard]] Date firstStartAfter(Date date) const;
  [[nodiscard]] bool isOnChosenWeekday(Date date) const;
  [[nodiscard]] bool lastsWholeWeeks() const { return settings_.daysUntilReset % 7 == 0; }
  [[nodiscard]] CadenceState steppedTo(Date now, Date start) const;

  PatchingCadenceSettings settings_;
  Calendar calendar_;
};

}  // namespace corvane
