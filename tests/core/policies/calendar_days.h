// Local days and times written as people write them, for tests of dates.
#pragma once

#include <chrono>
#include <sstream>
#include <string>

#include "base/calendar.h"

namespace corvane {

inline Calendar zone(const std::string& name) { return Calendar::named(name).value(); }

// "2026-03-29 02:30" on the local clock, by the rules of Calendar::at for times that are none or two.
inline Date localTime(const Calendar& calendar, const std::string& text) {
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  int hours = 0;
  int minutes = 0;
  char sign = 0;
  std::istringstream in(text);
  in >> year >> sign >> month >> sign >> day;
  if (in >> hours) in >> sign >> minutes;
  const std::chrono::year_month_day date = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
  return calendar.at(date, std::chrono::hours(hours) + std::chrono::minutes(minutes));
}

}  // namespace corvane
