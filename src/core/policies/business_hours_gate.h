// The daily window in which nothing is force-installed over open applications. Decides only; the callers act.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/calendar.h"
#include "base/date.h"

namespace corvane {

// A value; any thread. The window runs from the start up to, but not including, the end; an end before the
// start lies on the next day; equal times are a window that is always empty. On the days of a clock change a
// time that is skipped moves forward, and of a time that comes twice the first counts.
class BusinessHoursGate {
 public:
  BusinessHoursGate(const std::optional<std::string>& startTime, const std::optional<std::string>& endTime,
                    Calendar calendar);

  // Either time is absent or no time of day. Then no moment is within business hours.
  [[nodiscard]] bool isDisabled() const { return !start_ || !end_; }

  [[nodiscard]] bool isWithinBusinessHours(Date now) const;

  // The first end of a window later than `date`: that of the window around it, or else of the next one.
  // Absent when the gate is disabled or its window empty.
  [[nodiscard]] std::optional<Date> nextWindowEnd(Date date) const;

  // A hard deadline fired before now and outside the window, and `now` is inside: the enforcement that was due
  // after hours did not come.
  [[nodiscard]] bool missedAfterHoursEnforcement(std::optional<Date> lastDeadlineFiredAt, Date now) const;

  // As base/time_of_day.h reads it.
  [[nodiscard]] static std::optional<int> parseMinutesOfDay(std::string_view text);

  // The reverse, always with two digits each. Absent outside 0 to 1439.
  [[nodiscard]] static std::optional<std::string> formatMinutesOfDay(int minutes);

 private:
  [[nodiscard]] std::pair<Date, Date> windowOf(std::chrono::year_month_day day) const;

  std::optional<int> start_;
  std::optional<int> end_;
  Calendar calendar_;
};

}  // namespace corvane
