// Calendar arithmetic in one time zone. Wording of dates is not here: see the text port.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "base/date.h"

namespace corvane {

struct LocalTime {
  std::chrono::year_month_day day;
  std::chrono::minutes sinceMidnight{};  // whole minutes of the local clock
  std::chrono::seconds offset{};         // east of UTC
};

// A cheap value. Local times in a skipped hour move forward by the gap; of a doubled hour the first counts.
class Calendar {
 public:
  // An IANA zone name, "UTC" included. Absent when the system does not know the zone.
  [[nodiscard]] static std::optional<Calendar> named(std::string_view zone);
  [[nodiscard]] static Calendar utc();

  [[nodiscard]] std::string zoneName() const;
  [[nodiscard]] LocalTime local(Date date) const;
  [[nodiscard]] Date startOfDay(Date date) const;
  [[nodiscard]] bool isStartOfDay(Date date) const { return startOfDay(date) == date; }

  // The instant of a local day and time of day.
  [[nodiscard]] Date at(std::chrono::year_month_day day, std::chrono::seconds sinceMidnight) const;

  // The same local time of day, `days` calendar days on (or back).
  [[nodiscard]] Date addDays(Date date, int days) const;

  // 1 for Sunday to 7 for Saturday.
  [[nodiscard]] int weekday(Date date) const;

  // "2026-11-22T21:04:42.123+01:00"; milliseconds only when asked for.
  [[nodiscard]] std::string iso8601(Date date, bool milliseconds = false) const;

 private:
  explicit Calendar(const void* zone) : zone_(zone) {}
  [[nodiscard]] std::chrono::seconds offsetAt(Date date) const;
  // The instant at which the local clock, read as if it were UTC, shows `wall` since 1970.
  [[nodiscard]] Date fromWall(Duration wall) const;

  const void* zone_;  // of the time-zone database, which lives as long as the process; null is plain UTC
};

}  // namespace corvane
