#include "simulation/diary.h"

#include <fmt/format.h>

#include <array>

namespace corvane {

std::string diaryTime(Date date, const Calendar& calendar) {
  constexpr std::array kDays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto local = calendar.local(date);
  const auto minutes = local.sinceMidnight.count();
  return fmt::format("{} {:02} {} {:02}:{:02}", kDays.at(static_cast<std::size_t>(calendar.weekday(date) - 1)),
                     static_cast<unsigned>(local.day.day()), kMonths.at(static_cast<unsigned>(local.day.month()) - 1),
                     minutes / 60, minutes % 60);
}

void Diary::write(std::string_view event) {
  lines_.push_back(fmt::format("{} {}", diaryTime(clock_.now(), locale_.calendar()), event));
}

std::string Diary::text() const {
  std::string all;
  for (const auto& line : lines_) all += line + "\n";
  return all;
}

}  // namespace corvane
