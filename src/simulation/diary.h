// What happened on a simulated Mac and when, a line an event, as a person would put it down.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/locale.h"

namespace corvane {

// "Mon 26 Oct 09:00", in the zone of `calendar`.
[[nodiscard]] std::string diaryTime(Date date, const Calendar& calendar);

// Main thread. Clock and locale outlive it.
class Diary {
 public:
  Diary(const Clock& clock, const Locale& locale) : clock_(clock), locale_(locale) {}

  // One line at this moment: "Mon 26 Oct 09:00 asked: 3 applications".
  void write(std::string_view event);

  [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }
  // All lines, each with its end.
  [[nodiscard]] std::string text() const;
  void clear() { lines_.clear(); }

 private:
  const Clock& clock_;
  const Locale& locale_;
  std::vector<std::string> lines_;
};

}  // namespace corvane
