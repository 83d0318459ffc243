// American English in a chosen zone, the same on every machine.
#pragma once

#include <string>
#include <string_view>

#include "platform/locale.h"

namespace corvane {

// Words dates exactly as the real locale does for en_US, with the narrow no-break space before AM and PM.
// Names are ordered without case for the letters of ASCII, digits by value; other letters by their bytes.
class ScriptedLocale final : public Locale {
 public:
  // A zone that the system does not know counts as UTC.
  explicit ScriptedLocale(std::string_view zone = "UTC") { setZone(zone); }

  // The person travels.
  void setZone(std::string_view zone) { calendar_ = Calendar::named(zone).value_or(Calendar::utc()); }

  [[nodiscard]] Calendar calendar() const override { return calendar_; }
  [[nodiscard]] std::string longDate(Date date) const override;
  [[nodiscard]] std::string mediumDateShortTime(Date date) const override;
  [[nodiscard]] std::string shortTime(Date date) const override;
  [[nodiscard]] std::string number(std::int64_t value) const override;
  [[nodiscard]] std::string duration(std::int64_t count, DurationUnit unit) const override;
  [[nodiscard]] std::string sortKey(std::string_view name) const override;

 private:
  Calendar calendar_ = Calendar::utc();
};

}  // namespace corvane
