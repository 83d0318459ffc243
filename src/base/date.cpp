#include "base/date.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace corvane {
namespace {

// 2001-01-01 UTC in seconds since 1970.
constexpr std::chrono::seconds kReference2001 = 978307200s;

// Days far beyond any real date, but within what microseconds in 64 bits can count.
constexpr double kMostSeconds = 9.0e12;

Duration fromSeconds(double seconds) {
  if (std::isnan(seconds)) return Duration::zero();
  return Duration(std::llround(std::clamp(seconds, -kMostSeconds, kMostSeconds) * 1e6));
}

double toSeconds(Duration since) { return static_cast<double>(since.count()) / 1e6; }

// Reads from the front of a text; once something is missing, it stays failed.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  int digits(std::size_t count) {
    if (rest_.size() < count) return fail();
    int value = 0;
    for (const char c : rest_.substr(0, count)) {
      if (c < '0' || c > '9') return fail();
      value = value * 10 + (c - '0');
    }
    rest_.remove_prefix(count);
    return value;
  }

  bool take(char expected) {
    if (rest_.empty() || rest_.front() != expected) return false;
    rest_.remove_prefix(1);
    return true;
  }

  void need(char expected) {
    if (!take(expected)) fail();
  }

  // A fraction's digits as microseconds; what is finer is dropped.
  Duration fraction() {
    std::int64_t value = 0;
    std::size_t count = 0;
    while (!rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9') {
      if (count < 6) value = value * 10 + (rest_.front() - '0');
      ++count;
      rest_.remove_prefix(1);
    }
    if (count == 0) fail();
    for (; count < 6; ++count) value *= 10;
    return Duration(value);
  }

  [[nodiscard]] bool failed() const { return failed_; }
  [[nodiscard]] bool atEnd() const { return rest_.empty(); }

 private:
  int fail() {
    failed_ = true;
    rest_ = {};
    return 0;
  }

  std::string_view rest_;
  bool failed_ = false;
};

// "Z", "+01:00" or "-0330"; the offset east of UTC.
std::optional<std::chrono::minutes> readOffset(Reader& reader) {
  if (reader.take('Z') || reader.take('z')) return 0min;
  const bool west = reader.take('-');
  if (!west) reader.need('+');
  const int hours = reader.digits(2);
  reader.take(':');
  const int minutes = reader.digits(2);
  if (reader.failed() || hours > 23 || minutes > 59) return std::nullopt;
  const auto offset = std::chrono::hours(hours) + std::chrono::minutes(minutes);
  return west ? -offset : offset;
}

}  // namespace

double secondsSince1970(Date date) { return toSeconds(date.time_since_epoch()); }
Date dateFromSecondsSince1970(double seconds) { return Date(fromSeconds(seconds)); }
double secondsSince2001(Date date) { return toSeconds(date.time_since_epoch() - kReference2001); }
Date dateFromSecondsSince2001(double seconds) { return Date(fromSeconds(seconds) + kReference2001); }

std::string iso8601Utc(Date date) {
  const auto midnight = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day day(midnight);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::milliseconds>(date - midnight));
  auto text = fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", static_cast<int>(day.year()),
                          static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), time.hours().count(),
                          time.minutes().count(), time.seconds().count());
  if (time.subseconds() != 0ms) text += fmt::format(".{:03}", time.subseconds().count());
  return text + "Z";
}

std::optional<Date> parseIso8601(std::string_view text) {
  Reader reader(text);
  const int year = reader.digits(4);
  reader.need('-');
  const int month = reader.digits(2);
  reader.need('-');
  const int dayOfMonth = reader.digits(2);
  reader.need('T');
  const int hour = reader.digits(2);
  reader.need(':');
  const int minute = reader.digits(2);
  reader.need(':');
  const int second = reader.digits(2);
  const Duration fraction = reader.take('.') ? reader.fraction() : Duration::zero();
  const auto offset = readOffset(reader);
  if (reader.failed() || !offset || !reader.atEnd()) return std::nullopt;
  const std::chrono::year_month_day day(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                        std::chrono::day(static_cast<unsigned>(dayOfMonth)));
  // A leap second reads as the first of the next minute.
  if (!day.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
  return std::chrono::sys_days(day) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
         std::chrono::seconds(second) + fraction - *offset;
}

}  // namespace corvane
