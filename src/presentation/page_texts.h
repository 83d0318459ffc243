// How the pages word what they show: localised texts with the program's configured name, and moments.
#pragma once

#include <fmt/format.h>

#include <chrono>
#include <string>
#include <string_view>

#include "base/date.h"
#include "base/localized.h"
#include "core/preferences/display_title.h"
#include "platform/locale.h"

namespace corvane {

// Absolute and relative, in the same words everywhere: "tomorrow at 5:00 PM, in 21 hours", "Nov 3, 2026, 2:40 PM,
// 19 days ago". Whole units only: minutes below an hour, hours below two days, then calendar days; minutes ahead count
// from their beginning. Main thread.
[[nodiscard]] std::string momentText(Date moment, Date now, const Locale& locale);

// The same moment inside a sentence: "at 3:40 PM", "tomorrow at 3:40 PM", "on Nov 3, 2026, 2:40 PM". Main thread.
[[nodiscard]] std::string absoluteMomentText(Date moment, Date now, const Locale& locale);

// What is left until a moment ahead, by the same measure but to the minute within a day: "59 minutes",
// "1 hour, 59 minutes", "2 days". Main thread.
[[nodiscard]] std::string remainingText(Date moment, Date now, const Locale& locale);

// A length of time in its two largest units, hours and below: "45 seconds", "1 minute, 30 seconds", "24 hours",
// "1 hour, 30 minutes". Main thread.
[[nodiscard]] std::string amountText(std::chrono::seconds amount, const Locale& locale);

// What stands for an application without an icon: the first letter of its name, whatever its alphabet.
[[nodiscard]] std::string monogramOf(const std::string& name);

class PageTexts {
 public:
  explicit PageTexts(const AppDisplayTitle& title)
      : title_(title), formatTitle_(withoutPlaceholders(title.current())) {}

  // The localised literal, in which the configured title stands for the program's name. Values are filled in
  // afterwards, so that a name which is a value stays as it is.
  template <class... Args>
  [[nodiscard]] std::string localized(std::string_view literal, const Args&... args) const {
    if constexpr (sizeof...(Args) == 0)
      return title_.userFacing(corvane::localized(literal));
    else
      return fmt::format(fmt::runtime(formatTitle_.userFacing(corvane::localized(literal))), args...);
  }

 private:
  // Braces doubled: a configured title may hold them, and must not be taken for a place to fill.
  static std::string withoutPlaceholders(std::string_view title) {
    std::string escaped;
    for (const char sign : title) escaped.append(sign == '{' || sign == '}' ? 2 : 1, sign);
    return escaped;
  }

  AppDisplayTitle title_;
  AppDisplayTitle formatTitle_;
};

}  // namespace corvane
