// The user's zone and language: calendar arithmetic, wording of dates, order of names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/calendar.h"

namespace corvane {

enum class DurationUnit { second, minute, hour, day };

// Main thread. All wordings follow the user's locale; en_US gives the wordings that the tests hold.
class Locale {
 public:
  virtual ~Locale() = default;

  // The current calendar; read anew at each call, since the zone can change while the program runs.
  [[nodiscard]] virtual Calendar calendar() const = 0;

  [[nodiscard]] virtual std::string longDate(Date date) const = 0;             // "November 22, 2026"
  [[nodiscard]] virtual std::string mediumDateShortTime(Date date) const = 0;  // "Nov 22, 2026, 2:40 PM"
  [[nodiscard]] virtual std::string shortTime(Date date) const = 0;            // "2:40 PM"

  [[nodiscard]] virtual std::string number(std::int64_t value) const = 0;                       // "1,204"
  [[nodiscard]] virtual std::string duration(std::int64_t count, DurationUnit unit) const = 0;  // "2 hours"

  // A key whose byte order is the localized case-insensitive order of the names, numbers by value.
  [[nodiscard]] virtual std::string sortKey(std::string_view name) const = 0;
};

}  // namespace corvane
