#include "platform/linux/linux_locale.h"
#include "platform/scripted/scripted_locale.h"
#include "support/environment_variable.h"
#include "support/test.h"

namespace corvane::testing {

namespace {

struct RealLocale {
  explicit RealLocale(std::string zone) : locale("en_US", [zone = std::move(zone)] { return zone; }) {}
  LinuxLocale locale;
};
struct ScriptedWorld {
  explicit ScriptedWorld(std::string_view zone) : locale(zone) {}
  ScriptedLocale locale;
};

std::vector<std::string> sorted(const Locale& locale, std::vector<std::string> names) {
  std::ranges::stable_sort(names, {}, [&](const std::string& name) { return locale.sortKey(name); });
  return names;
}

constexpr Date kAfternoon = Date(std::chrono::sys_days(std::chrono::year(2026) / 11 / 22)) + 19h + 40min;

}  // namespace

template <class World>
class LocaleContract : public ::testing::Test {};
using Locales = ::testing::Types<RealLocale, ScriptedWorld>;
TYPED_TEST_SUITE(LocaleContract, Locales);

TYPED_TEST(LocaleContract, NumbersAndDurationsAreWordedInFull) {
  const TypeParam world("UTC");
  EXPECT_EQ(world.locale.number(7), "7");
  EXPECT_EQ(world.locale.number(1204), "1,204");
  EXPECT_EQ(world.locale.number(-1204567), "-1,204,567");
  EXPECT_EQ(world.locale.duration(45, DurationUnit::second), "45 seconds");
  EXPECT_EQ(world.locale.duration(1, DurationUnit::hour), "1 hour");
  EXPECT_EQ(world.locale.duration(90, DurationUnit::minute), "90 minutes");
  EXPECT_EQ(world.locale.duration(0, DurationUnit::day), "0 days");
}

TYPED_TEST(LocaleContract, AmericanEnglishIsWordedTheSameInEveryZone) {
  TypeParam newYork("America/New_York");
  EXPECT_EQ(newYork.locale.calendar().zoneName(), "America/New_York");
  EXPECT_EQ(newYork.locale.longDate(kAfternoon), "November 22, 2026");
  EXPECT_EQ(newYork.locale.mediumDateShortTime(kAfternoon), "Nov 22, 2026, 2:40\u202FPM");
  EXPECT_EQ(newYork.locale.shortTime(kAfternoon), "2:40\u202FPM");
  EXPECT_EQ(newYork.locale.shortTime(kAfternoon - 2h - 40min), "12:00\u202FPM");
  TypeParam kolkata("Asia/Kolkata");
  EXPECT_EQ(kolkata.locale.mediumDateShortTime(kAfternoon), "Nov 23, 2026, 1:10\u202FAM");
  TypeParam unknown("Mars/Olympus");
  EXPECT_EQ(unknown.locale.shortTime(kAfternoon), "7:40\u202FPM");
}

TYPED_TEST(LocaleContract, NamesAreOrderedWithoutCaseAndNumbersByValue) {
  const TypeParam world("UTC");
  EXPECT_EQ(sorted(world.locale, {"item 10", "Zebra", "apple", "Item 2", "Banana", "item 010b"}),
            (std::vector<std::string>{"apple", "Banana", "Item 2", "item 10", "item 010b", "Zebra"}));
  EXPECT_EQ(world.locale.sortKey("Notes"), world.locale.sortKey("nOTES"));
}

TEST(LinuxLocaleTest, AccentsAndOtherLanguagesFollowTheirOrder) {
  const LinuxLocale german("de_DE", [] { return "Europe/Berlin"; });
  EXPECT_EQ(german.longDate(kAfternoon), "22. November 2026");
  EXPECT_EQ(german.shortTime(kAfternoon), "20:40");
  EXPECT_EQ(german.duration(2, DurationUnit::day), "2 Tage");
  EXPECT_EQ(german.number(1204), "1.204");
  EXPECT_EQ(sorted(german, {"Zeit", "Über", "Uhr", "Ärger", "Apfel"}),
            (std::vector<std::string>{"Apfel", "Ärger", "Über", "Uhr", "Zeit"}));
}

TEST(LinuxLocaleTest, TheEnvironmentNamesLocaleAndZone) {
  const EnvironmentVariable lang("LANG", "de_DE.UTF-8");
  {
    const EnvironmentVariable all("LC_ALL", std::nullopt);
    const EnvironmentVariable time("LC_TIME", "fr_CA@euro");
    EXPECT_EQ(localeNameFromEnvironment(), "fr_CA");
  }
  {
    const EnvironmentVariable all("LC_ALL", "C.UTF-8");
    EXPECT_EQ(localeNameFromEnvironment(), "en_US");
  }
  const std::pair<const char*, std::string> zones[] = {{"Europe/Paris", "Europe/Paris"},
                                                       {":America/Denver", "America/Denver"},
                                                       {"/usr/share/zoneinfo/posix/Asia/Tokyo", "Asia/Tokyo"}};
  for (const auto& [value, name] : zones) {
    const EnvironmentVariable zone("TZ", value);
    EXPECT_EQ(systemZoneName(), name);
  }
}

}  // namespace corvane::testing
