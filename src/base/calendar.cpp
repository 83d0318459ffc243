#include "base/calendar.h"

#include <date/tz.h>
#include <fmt/format.h>

#include <exception>

namespace corvane {
namespace {

const date::time_zone& zoneOf(const void* zone) { return *static_cast<const date::time_zone*>(zone); }

// A zone name may come from the environment; nothing but a plain relative name reaches the zone folder.
bool plainZoneName(std::string_view name) {
  if (name.empty() || name.size() > 64 || name.front() == '/' || name.find("..") != name.npos) return false;
  return name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/_+-") == name.npos;
}

// A stretch of time in which a zone keeps one offset. They last for months, and whoever asks for one moment goes on to
// ask for others near it, so the last one is kept.
struct Stretch {
  const void* zone = nullptr;
  date::sys_seconds begin;
  date::sys_seconds end;
  std::chrono::seconds offset{};

  [[nodiscard]] bool holds(const void* ofZone, date::sys_seconds moment) const {
    return zone == ofZone && begin <= moment && moment < end;
  }
};
thread_local Stretch lastStretch;

// Further from either end of its stretch than any clock is ever moved, a local time is neither skipped nor doubled.
constexpr auto kMostMoved = std::chrono::hours(48);

}  // namespace

std::optional<Calendar> Calendar::named(std::string_view zone) {
  if (!plainZoneName(zone)) return std::nullopt;
  try {
    return Calendar(date::locate_zone(std::string(zone)));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

Calendar Calendar::utc() {
  for (const auto* name : {"UTC", "Etc/UTC"})
    if (const auto calendar = named(name)) return *calendar;
  return Calendar(nullptr);
}

std::string Calendar::zoneName() const { return zone_ ? zoneOf(zone_).name() : "UTC"; }

LocalTime Calendar::local(Date date) const {
  const auto offset = offsetAt(date);
  const auto wall = date + offset;
  const auto midnight = std::chrono::floor<std::chrono::days>(wall);
  return {.day = std::chrono::year_month_day(midnight),
          .sinceMidnight = std::chrono::floor<std::chrono::minutes>(wall - midnight),
          .offset = offset};
}

std::chrono::seconds Calendar::offsetAt(Date date) const {
  if (!zone_) return 0s;
  const auto moment = std::chrono::floor<std::chrono::seconds>(date);
  if (!lastStretch.holds(zone_, moment)) {
    const auto info = zoneOf(zone_).get_info(moment);
    lastStretch = {.zone = zone_, .begin = info.begin, .end = info.end, .offset = info.offset};
  }
  return lastStretch.offset;
}

Date Calendar::startOfDay(Date date) const { return at(local(date).day, 0s); }

Date Calendar::at(std::chrono::year_month_day day, std::chrono::seconds sinceMidnight) const {
  return fromWall(std::chrono::sys_days(day).time_since_epoch() + sinceMidnight);
}

Date Calendar::fromWall(Duration wall) const {
  if (!zone_) return Date(wall);
  const auto whole = std::chrono::floor<std::chrono::seconds>(wall);
  const auto moment = date::sys_seconds(whole - lastStretch.offset);
  if (lastStretch.holds(zone_, moment - kMostMoved) && lastStretch.holds(zone_, moment + kMostMoved))
    return Date(wall - lastStretch.offset);
  // `first` is the offset before the change in a gap and in a doubled hour, and the only one otherwise.
  const auto info = zoneOf(zone_).get_info(date::local_seconds(whole));
  return Date(wall - info.first.offset);
}

Date Calendar::addDays(Date date, int days) const {
  return fromWall(date.time_since_epoch() + offsetAt(date) + std::chrono::days(days));
}

int Calendar::weekday(Date date) const {
  return static_cast<int>(std::chrono::weekday(std::chrono::sys_days(local(date).day)).c_encoding()) + 1;
}

std::string Calendar::iso8601(Date date, bool milliseconds) const {
  const auto here = local(date);
  const auto wall = date + here.offset;
  const std::chrono::hh_mm_ss time(
      std::chrono::floor<std::chrono::milliseconds>(wall - std::chrono::floor<std::chrono::days>(wall)));
  auto text = fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", static_cast<int>(here.day.year()),
                          static_cast<unsigned>(here.day.month()), static_cast<unsigned>(here.day.day()),
                          time.hours().count(), time.minutes().count(), time.seconds().count());
  if (milliseconds) text += fmt::format(".{:03}", time.subseconds().count());
  const auto minutes = std::chrono::floor<std::chrono::minutes>(std::chrono::abs(here.offset)).count();
  return text + fmt::format("{}{:02}:{:02}", here.offset < 0s ? '-' : '+', minutes / 60, minutes % 60);
}

}  // namespace corvane
