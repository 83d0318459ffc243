#include "core/policies/business_hours_gate.h"

#include <fmt/format.h>

namespace corvane {

namespace {

constexpr int kMinutesADay = 24 * 60;
constexpr std::string_view kBlanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// All of the text as a number of one or two digits, below `bound`.
std::optional<int> number(std::string_view text, int bound) {
  if (text.empty() || text.size() > 2) return std::nullopt;
  int value = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') return std::nullopt;
    value = value * 10 + (digit - '0');
  }
  return value < bound ? std::optional(value) : std::nullopt;
}

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

std::optional<int> BusinessHoursGate::parseMinutesOfDay(std::string_view text) {
  text = trimmed(text);
  const auto colon = text.find(':');
  if (colon == std::string_view::npos || text.size() - colon != 3) return std::nullopt;
  const auto hours = number(text.substr(0, colon), 24);
  const auto minutes = number(text.substr(colon + 1), 60);
  if (!hours || !minutes) return std::nullopt;
  return *hours * 60 + *minutes;
}

std::optional<std::string> BusinessHoursGate::formatMinutesOfDay(int minutes) {
  if (minutes < 0 || minutes >= kMinutesADay) return std::nullopt;
  return fmt::format("{:02}:{:02}", minutes / 60, minutes % 60);
}

}  // namespace corvane
