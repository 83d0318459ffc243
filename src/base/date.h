// Instants and durations, and their forms on disk. No time zone is known here: see calendar.h.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

using Duration = std::chrono::microseconds;

// An absolute instant, counted from 1970-01-01 UTC.
using Date = std::chrono::sys_time<Duration>;

// A point on the machine's steady clock; it stands still while the machine sleeps and never jumps.
using SteadyTime = std::chrono::time_point<std::chrono::steady_clock, Duration>;

using namespace std::chrono_literals;

// Seconds since 2001-01-01 UTC, the form of dates in helper state files and notification records.
[[nodiscard]] double secondsSince2001(Date date);
[[nodiscard]] Date dateFromSecondsSince2001(double seconds);

// Whole or fractional seconds since 1970.
[[nodiscard]] double secondsSince1970(Date date);
[[nodiscard]] Date dateFromSecondsSince1970(double seconds);

// "2026-11-22T21:04:42.123Z"; milliseconds are left out when they are zero. The form of receipts and events.
[[nodiscard]] std::string iso8601Utc(Date date);

// Reads ISO 8601 with "Z" or a numeric offset, with or without a fraction. Absent for anything else.
[[nodiscard]] std::optional<Date> parseIso8601(std::string_view text);

// XML property lists drop fractions, so stored dates are compared with a second's tolerance.
[[nodiscard]] inline bool sameSecond(Date a, Date b) {
  const auto gap = a < b ? b - a : a - b;
  return gap < 1s;
}

}  // namespace corvane
