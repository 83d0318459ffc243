#include "core/policies/business_hours_gate.h"

#include <fmt/format.h>

#include "base/time_of_day.h"

namespace corvane {

namespace {

constexpr int kMinutesADay = 24 * 60;

std::optional<int> minutesOf(const std::optional<std::string>& time) {
  return time ? BusinessHoursGate::parseMinutesOfDay(*time) : std::nullopt;
}

}  // namespace

BusinessHoursGate::BusinessHoursGate(const std::optional<std::string>& startTime,
                                     const std::optional<std::string>& endTime, Calendar calendar)
    : start_(minutesOf(startTime)), end_(minutesOf(endTime)), calendar_(calendar) {}

std::pair<Date, Date> BusinessHoursGate::windowOf(std::chrono::year_month_day day) const {
  using std::chrono::minutes;
  const std::chrono::sys_days next = std::chrono::sys_days(day) + std::chrono::days(1);
  const auto endDay = *end_ < *start_ ? std::chrono::year_month_day(next) : day;
  return {calendar_.at(day, minutes(*start_)), calendar_.at(endDay, minutes(*end_))};
}

bool BusinessHoursGate::isWithinBusinessHours(Date now) const {
  if (isDisabled()) return false;
  const std::chrono::sys_days today = calendar_.local(now).day;
  for (const auto day : {today - std::chrono::days(1), today}) {
    const auto [start, end] = windowOf(day);
    if (start <= now && now < end) return true;
  }
  return false;
}

std::optional<Date> BusinessHoursGate::nextWindowEnd(Date date) const {
  if (isDisabled() || *start_ == *end_) return std::nullopt;
  std::chrono::sys_days day = std::chrono::sys_days(calendar_.local(date).day) - std::chrono::days(1);
  while (true) {
    const auto [start, end] = windowOf(day);
    if (end > date && start < end) return end;
    day += std::chrono::days(1);
  }
}

bool BusinessHoursGate::missedAfterHoursEnforcement(std::optional<Date> lastDeadlineFiredAt, Date now) const {
  return lastDeadlineFiredAt && *lastDeadlineFiredAt < now && isWithinBusinessHours(now) &&
         !isWithinBusinessHours(*lastDeadlineFiredAt);
}

std::optional<int> BusinessHoursGate::parseMinutesOfDay(std::string_view text) { return minutesOfDay(text); }

std::optional<std::string> BusinessHoursGate::formatMinutesOfDay(int minutes) {
  if (minutes < 0 || minutes >= kMinutesADay) return std::nullopt;
  return fmt::format("{:02}:{:02}", minutes / 60, minutes % 60);
}

}  // namespace corvane
