#include "platform/scripted/scripted_locale.h"

#include <fmt/format.h>

#include <array>

#include "base/ascii.h"

namespace corvane {

namespace {

constexpr std::array<std::string_view, 12> kMonths{"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};
constexpr std::size_t kShortMonth = 3;

std::string dayText(const LocalTime& local, std::string_view month) {
  return fmt::format("{} {}, {}", month, static_cast<unsigned>(local.day.day()), static_cast<int>(local.day.year()));
}

std::string_view monthName(const LocalTime& local) { return kMonths[static_cast<unsigned>(local.day.month()) - 1]; }

std::string timeText(const LocalTime& local) {
  const auto minutes = local.sinceMidnight.count();
  const auto hour = minutes / 60 % 12;
  return fmt::format("{}:{:02}\u202F{}", hour == 0 ? 12 : hour, minutes % 60, minutes < 12 * 60 ? "AM" : "PM");
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::string ScriptedLocale::longDate(Date date) const {
  const auto local = calendar_.local(date);
  return dayText(local, monthName(local));
}

std::string ScriptedLocale::mediumDateShortTime(Date date) const {
  const auto local = calendar_.local(date);
  return dayText(local, monthName(local).substr(0, kShortMonth)) + ", " + timeText(local);
}

std::string ScriptedLocale::shortTime(Date date) const { return timeText(calendar_.local(date)); }

std::string ScriptedLocale::number(std::int64_t value) const {
  auto text = std::to_string(value);
  for (auto at = static_cast<std::ptrdiff_t>(text.size()) - 3; at > (value < 0 ? 1 : 0); at -= 3)
    text.insert(static_cast<std::size_t>(at), 1, ',');
  return text;
}

std::string ScriptedLocale::duration(std::int64_t count, DurationUnit unit) const {
  constexpr std::array<std::string_view, 4> kNames = {"second", "minute", "hour", "day"};
  return fmt::format("{} {}{}", number(count), kNames.at(static_cast<std::size_t>(unit)), count == 1 ? "" : "s");
}

// A number becomes a digit's place, its length and its digits, so that longer ones come behind shorter ones.
std::string ScriptedLocale::sortKey(std::string_view name) const {
  std::string key;
  for (std::size_t i = 0; i < name.size();) {
    if (!isDigit(name[i])) {
      key.push_back(lowered(name[i++]));
      continue;
    }
    while (i + 1 < name.size() && name[i] == '0' && isDigit(name[i + 1])) ++i;
    auto end = i;
    while (end < name.size() && isDigit(name[end])) ++end;
    key.push_back('0');
    key.push_back(static_cast<char>(end - i));
    key.append(name.substr(i, end - i));
    i = end;
  }
  return key;
}

}  // namespace corvane
