#include "presentation/page_texts.h"

#include <cstdint>

namespace corvane {

namespace {

std::int64_t calendarDaysBetween(Date from, Date to, const Locale& locale) {
  const auto calendar = locale.calendar();
  const std::chrono::sys_days first = calendar.local(from).day;
  const std::chrono::sys_days last = calendar.local(to).day;
  return (last - first).count();
}

std::string absolute(Date moment, std::int64_t days, const Locale& locale) {
  const auto at = [&](std::string_view literal) { return localized(literal, locale.shortTime(moment)); };
  if (days == 0) return at(toLocalize("today at {}"));
  if (days == 1) return at(toLocalize("tomorrow at {}"));
  if (days == -1) return at(toLocalize("yesterday at {}"));
  return locale.mediumDateShortTime(moment);
}

// Begun minutes of what lies ahead: an hour chosen just now is an hour.
Duration begun(Duration left) { return left < 1min ? left : std::chrono::ceil<std::chrono::minutes>(left); }

struct Unit {
  std::int64_t count;
  std::string_view one;
  std::string_view many;
};

std::string relative(Date moment, Date now, std::int64_t days) {
  const bool ahead = moment > now;
  const auto gap = ahead ? begun(moment - now) : now - moment;
  const auto worded = [](const Unit& unit) { return localized(unit.count == 1 ? unit.one : unit.many, unit.count); };
  if (gap < 1min) return localized(ahead ? toLocalize("in less than a minute") : toLocalize("just now"));
  if (gap < 1h) {
    const auto minutes = std::chrono::floor<std::chrono::minutes>(gap).count();
    return worded(ahead ? Unit{minutes, toLocalize("in {} minute"), toLocalize("in {} minutes")}
                        : Unit{minutes, toLocalize("{} minute ago"), toLocalize("{} minutes ago")});
  }
  if (gap < 48h) {
    const auto hours = std::chrono::floor<std::chrono::hours>(gap).count();
    return worded(ahead ? Unit{hours, toLocalize("in {} hour"), toLocalize("in {} hours")}
                        : Unit{hours, toLocalize("{} hour ago"), toLocalize("{} hours ago")});
  }
  return worded(ahead ? Unit{days, toLocalize("in {} day"), toLocalize("in {} days")}
                      : Unit{-days, toLocalize("{} day ago"), toLocalize("{} days ago")});
}

}  // namespace

std::string absoluteMomentText(Date moment, Date now, const Locale& locale) {
  const auto days = calendarDaysBetween(now, moment, locale);
  if (days == 0) return localized("at {}", locale.shortTime(moment));
  if (days == 1 || days == -1) return absolute(moment, days, locale);
  return localized("on {}", locale.mediumDateShortTime(moment));
}

std::string momentText(Date moment, Date now, const Locale& locale) {
  const auto days = calendarDaysBetween(now, moment, locale);
  return localized("{}, {}", absolute(moment, days, locale), relative(moment, now, days));
}

std::string remainingText(Date moment, Date now, const Locale& locale) {
  const auto left = begun(moment - now);
  if (left < 1min) return localized("less than a minute");
  const auto minutes = std::chrono::floor<std::chrono::minutes>(left).count();
  if (left >= 48h) return locale.duration(calendarDaysBetween(now, moment, locale), DurationUnit::day);
  if (left >= 24h) return locale.duration(minutes / 60, DurationUnit::hour);
  return amountText(std::chrono::minutes(minutes), locale);
}

std::string amountText(std::chrono::seconds amount, const Locale& locale) {
  if (amount < 1min) return locale.duration(amount.count(), DurationUnit::second);
  const bool inHours = amount >= 1h;
  const auto whole = inHours ? amount / 1h : amount / 1min;
  const auto rest = inHours ? amount % 1h / 1min : amount % 1min / 1s;
  auto text = locale.duration(whole, inHours ? DurationUnit::hour : DurationUnit::minute);
  if (rest == 0) return text;
  return localized("{}, {}", text, locale.duration(rest, inHours ? DurationUnit::minute : DurationUnit::second));
}

std::string monogramOf(const std::string& name) {
  std::size_t length = name.empty() ? 0 : 1;
  while (length < name.size() && (static_cast<unsigned char>(name[length]) & 0xC0U) == 0x80U) ++length;
  auto letter = name.substr(0, length);
  if (letter.size() == 1 && letter[0] >= 'a' && letter[0] <= 'z') letter[0] = static_cast<char>(letter[0] - 'a' + 'A');
  return letter;
}

}  // namespace corvane
