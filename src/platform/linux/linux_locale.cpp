#include "platform/linux/linux_locale.h"

#include <unicode/coll.h>
#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/measunit.h>
#include <unicode/numberformatter.h>
#include <unicode/simpletz.h>
#include <unicode/unistr.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

namespace corvane {

namespace {

constexpr std::string_view kZoneFolder = "/zoneinfo/";

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::string utf8(const icu::UnicodeString& text) {
  std::string bytes;
  return text.toUTF8String(bytes);
}

// The zone's name in a path such as "/usr/share/zoneinfo/Europe/Berlin"; empty when there is none.
std::string zoneInPath(std::string_view path) {
  const auto folder = path.rfind(kZoneFolder);
  if (folder == std::string_view::npos) return {};
  auto zone = path.substr(folder + kZoneFolder.size());
  for (const std::string_view variant : {"posix/", "right/"})
    if (zone.starts_with(variant)) zone.remove_prefix(variant.size());
  return std::string(zone);
}

icu::MeasureUnit measureOf(DurationUnit unit) {
  switch (unit) {
    case DurationUnit::second:
      return icu::MeasureUnit::getSecond();
    case DurationUnit::minute:
      return icu::MeasureUnit::getMinute();
    case DurationUnit::hour:
      return icu::MeasureUnit::getHour();
    case DurationUnit::day:
      break;
  }
  return icu::MeasureUnit::getDay();
}

}  // namespace

std::string localeNameFromEnvironment() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    auto name = environment(variable);
    name.resize(std::min(name.size(), name.find_first_of(".@")));
    if (name == "C" || name == "POSIX") break;
    if (!name.empty()) return name;
  }
  return "en_US";
}

std::string systemZoneName() {
  auto zone = environment("TZ");
  if (zone.starts_with(':')) zone.erase(0, 1);
  if (zone.starts_with('/')) zone = zoneInPath(zone);
  if (!zone.empty()) return zone;
  std::error_code error;
  zone = zoneInPath(std::filesystem::read_symlink("/etc/localtime", error).native());
  if (!zone.empty()) return zone;
  std::ifstream file("/etc/timezone");
  std::getline(file, zone);
  return zone.empty() ? "UTC" : zone;
}

// ICU's objects are dear to make, so each is made at its first use and kept.
struct LinuxLocale::Wording {
  explicit Wording(const std::string& name) : locale(name.c_str()) {}

  enum Style { longDate, mediumDateShortTime, shortTime };

  [[nodiscard]] icu::DateFormat* format(Style style) {
    auto& slot = formats[style];
    if (slot) return slot.get();
    using Icu = icu::DateFormat;
    switch (style) {
      case longDate:
        slot.reset(Icu::createDateInstance(Icu::kLong, locale));
        break;
      case mediumDateShortTime:
        slot.reset(Icu::createDateTimeInstance(Icu::kMedium, Icu::kShort, locale));
        break;
      case shortTime:
        slot.reset(Icu::createTimeInstance(Icu::kShort, locale));
        break;
    }
    return slot.get();
  }

  // The offset comes from the system's zones: those inside ICU are years old.
  [[nodiscard]] std::string word(Style style, Date date, std::chrono::seconds offset) {
    auto* chosen = format(style);
    if (chosen == nullptr) return {};
    chosen->adoptTimeZone(new icu::SimpleTimeZone(static_cast<std::int32_t>(offset.count() * 1000), "local"));
    icu::UnicodeString text;
    chosen->format(secondsSince1970(date) * 1000, text);
    return utf8(text);
  }

  [[nodiscard]] const icu::Collator* order() {
    if (collator) return collator.get();
    UErrorCode status = U_ZERO_ERROR;
    collator.reset(icu::Collator::createInstance(locale, status));
    if (U_FAILURE(status)) collator.reset();
    if (collator) {
      collator->setStrength(icu::Collator::SECONDARY);  // letters and accents, not case
      collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    }
    return collator.get();
  }

  icu::Locale locale;
  std::array<std::unique_ptr<icu::DateFormat>, 3> formats;
  std::unique_ptr<icu::Collator> collator;
};

LinuxLocale::LinuxLocale(const std::string& localeName, std::function<std::string()> zoneName)
    : zoneName_(std::move(zoneName)), wording_(std::make_unique<Wording>(localeName)) {}

LinuxLocale::~LinuxLocale() = default;

Calendar LinuxLocale::calendar() const { return Calendar::named(zoneName_()).value_or(Calendar::utc()); }

std::string LinuxLocale::longDate(Date date) const {
  return wording_->word(Wording::longDate, date, calendar().local(date).offset);
}

std::string LinuxLocale::mediumDateShortTime(Date date) const {
  return wording_->word(Wording::mediumDateShortTime, date, calendar().local(date).offset);
}

std::string LinuxLocale::shortTime(Date date) const {
  return wording_->word(Wording::shortTime, date, calendar().local(date).offset);
}

std::string LinuxLocale::number(std::int64_t value) const {
  UErrorCode status = U_ZERO_ERROR;
  const auto text =
      icu::number::NumberFormatter::withLocale(wording_->locale).formatInt(value, status).toString(status);
  return U_FAILURE(status) ? std::to_string(value) : utf8(text);
}

std::string LinuxLocale::duration(std::int64_t count, DurationUnit unit) const {
  UErrorCode status = U_ZERO_ERROR;
  const auto text = icu::number::NumberFormatter::withLocale(wording_->locale)
                        .unit(measureOf(unit))
                        .unitWidth(UNUM_UNIT_WIDTH_FULL_NAME)
                        .formatInt(count, status)
                        .toString(status);
  return U_FAILURE(status) ? std::to_string(count) : utf8(text);
}

std::string LinuxLocale::sortKey(std::string_view name) const {
  const auto* order = wording_->order();
  if (order == nullptr) return std::string(name);
  const auto text = icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
  std::string key(static_cast<std::size_t>(order->getSortKey(text, nullptr, 0)), '\0');
  order->getSortKey(text, reinterpret_cast<std::uint8_t*>(key.data()), static_cast<std::int32_t>(key.size()));
  // The zero at its end orders nothing.
  if (!key.empty()) key.pop_back();
  return key;
}

}  // namespace corvane
