#include <cmath>
#include <limits>

#include "base/calendar.h"
#include "base/json.h"
#include "base/uuid.h"
#include "support/test.h"

namespace corvane {
namespace {

using std::chrono::year;

TEST(DateTest, ReadsAndWritesIso8601) {
  const Date noon = Date(std::chrono::sys_days(year(2026) / 11 / 22)) + 12h;
  EXPECT_EQ(iso8601Utc(noon), "2026-11-22T12:00:00Z");
  EXPECT_EQ(iso8601Utc(noon + 7ms), "2026-11-22T12:00:00.007Z");
  EXPECT_EQ(iso8601Utc(Date(-1s)), "1969-12-31T23:59:59Z");
  for (const auto* text : {"2026-11-22T12:00:00Z", "2026-11-22T13:00:00+01:00", "2026-11-22T08:30:00-0330",
                           "2026-11-22T12:00:00.000000999Z"})
    EXPECT_EQ(parseIso8601(text), noon) << text;
  EXPECT_EQ(parseIso8601("2026-11-22T12:00:00.5Z"), noon + 500ms);
  for (const auto* text : {"", "2026-11-22", "2026-11-22T12:00:00", "2026-02-30T12:00:00Z", "2026-11-22T24:00:00Z",
                           "2026-11-22T12:00:00.Z", "2026-11-22T12:00:00Zx", "2026-11-22T12:00:00+1",
                           " 2026-11-22T12:00:00Z", "2026-11-22T12:00:00+99:00"})
    EXPECT_EQ(parseIso8601(text), std::nullopt) << text;
}

TEST(DateTest, SecondsSince2001SurviveOddNumbers) {
  EXPECT_EQ(iso8601Utc(dateFromSecondsSince2001(0)), "2001-01-01T00:00:00Z");
  EXPECT_DOUBLE_EQ(secondsSince2001(dateFromSecondsSince2001(785419200.25)), 785419200.25);
  for (const double odd : {HUGE_VAL, -HUGE_VAL, std::nan(""), 1e300})
    EXPECT_FALSE(iso8601Utc(dateFromSecondsSince2001(odd)).empty());
}

TEST(UuidTest, ReadsEitherCaseAndNothingElse) {
  const std::string text = "0F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0";
  const auto uuid = Uuid::parse("0f1e2d3c-4b5a-4978-8796-a5b4c3d2e1f0");
  ASSERT_TRUE(uuid);
  EXPECT_EQ(uuid->text(), text);
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto broken = text;
    broken[i] = 'g';
    EXPECT_FALSE(Uuid::parse(broken)) << broken;
    EXPECT_FALSE(Uuid::parse(text.substr(0, i)));
  }
}

TEST(JsonTest, ValuesSurviveARoundTrip) {
  const JsonValue value = JsonObject{{"text", "a\"\n\u00fc\U0001F600"},
                                     {"least", std::numeric_limits<std::int64_t>::min()},
                                     {"most", std::numeric_limits<std::int64_t>::max()},
                                     {"real", 0.1},
                                     {"list", JsonArray{true, nullptr, JsonObject{}, JsonArray{}}}};
  for (const auto& text : {writeJson(value), writeJsonPretty(value)}) {
    const auto read = parseJson(text);
    ASSERT_TRUE(read) << text;
    EXPECT_EQ(*read, value);
  }
  EXPECT_EQ(writeJson(JsonObject{{"b", 1}, {"a", HUGE_VAL}}), R"({"b":1,"a":null})");
}

TEST(JsonTest, BytesThatAreNoUtf8AreReplacedAndTheRestIsRead) {
  const std::pair<std::string_view, std::string_view> texts[] = {
      {"1.0\xff", "1.0\uFFFD"},
      {"\xc3", "\uFFFD"},
      {"\xe2\x82", "\uFFFD\uFFFD"},
      {"\xed\xa0\x80z", "\uFFFD\uFFFD\uFFFDz"},  // half of a surrogate pair
      {"\xc0\x80", "\uFFFD\uFFFD"},              // an overlong NUL
      {"\xc3(\xe2\x82\xac", "\uFFFD(\u20ac"},
      {"\u00fc\U0001F600", "\u00fc\U0001F600"},
  };
  for (const auto& [given, shown] : texts) {
    const auto read = parseJson(writeJson(JsonObject{{std::string(given), given}, {"other", 1}}));
    ASSERT_TRUE(read) << shown;
    EXPECT_EQ(*read, JsonValue(JsonObject{{std::string(shown), shown}, {"other", 1}}));
  }
}

TEST(JsonTest, NumbersBeyondSixtyFourBitsSignedBecomeReal) {
  EXPECT_EQ(parseJson("18446744073709551615")->number(), 18446744073709551615.0);
  EXPECT_EQ(parseJson("18446744073709551615")->integer(), std::nullopt);
  EXPECT_EQ(parseJson("3")->number(), 3.0);
}

TEST(JsonTest, TheLastOfEqualKeysWinsUnlessTheyMustBeDistinct) {
  EXPECT_EQ(parseJson(R"({"a":1,"b":2,"a":3})")->find("a")->integer(), 3);
  std::string many = "{";
  for (int i = 0; i < 100; ++i) many += "\"k" + std::to_string(i % 50) + "\":" + std::to_string(i) + ",";
  many.back() = '}';
  const auto read = parseJson(many);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->object()->entries().size(), 50U);
  EXPECT_EQ(read->find("k7")->integer(), 57);
  for (const auto& text : {many, std::string(R"({"a":1,"a":1})"), std::string(R"([{"b":{"a":1,"c":2,"a":3}}])")})
    EXPECT_FALSE(parseJsonOfDistinctKeys(text)) << text;
  EXPECT_TRUE(parseJsonOfDistinctKeys(R"([{"a":1},{"a":{"a":1}}])"));
}

TEST(JsonTest, RefusesWhatIsNotStrictJson) {
  const auto nested = [](int depth) { return std::string(depth, '[') + "1" + std::string(depth, ']'); };
  std::string objects;
  for (int i = 0; i < 100000; ++i) objects += "{\"a\":";
  EXPECT_TRUE(parseJson(nested(256)));
  for (const auto& text :
       {std::string(), std::string("{"), std::string("[1,]"), std::string("{'a':1}"), std::string("1 2"),
        std::string("\"\xff\""), std::string("nul"), nested(257), nested(100000), std::string(100000, '['), objects}) {
    const auto read = parseJson(text);
    ASSERT_FALSE(read) << text.substr(0, 20);
    EXPECT_FALSE(read.error().text.empty());
  }
}

TEST(CalendarTest, SkippedTimesMoveForwardAndOfADoubledHourTheFirstCounts) {
  const std::tuple<const char*, std::chrono::year_month_day, std::chrono::seconds, const char*> rows[] = {
      {"America/New_York", year(2026) / 3 / 8, 1h + 59min, "2026-03-08T01:59:00-05:00"},
      {"America/New_York", year(2026) / 3 / 8, 2h + 30min, "2026-03-08T03:30:00-04:00"},
      {"America/New_York", year(2026) / 11 / 1, 1h + 30min, "2026-11-01T01:30:00-04:00"},
      {"America/New_York", year(2026) / 11 / 1, 2h, "2026-11-01T02:00:00-05:00"},
      {"Europe/Berlin", year(2026) / 3 / 29, 2h, "2026-03-29T03:00:00+02:00"},
      {"Europe/Berlin", year(2026) / 10 / 25, 2h + 30min, "2026-10-25T02:30:00+02:00"},
      {"Africa/Cairo", year(2026) / 4 / 24, 0h, "2026-04-24T01:00:00+03:00"},
      {"UTC", year(2026) / 3 / 29, 2h, "2026-03-29T02:00:00+00:00"},
  };
  for (const auto& [zone, day, time, expected] : rows) {
    const auto calendar = Calendar::named(zone);
    ASSERT_TRUE(calendar) << zone;
    EXPECT_EQ(calendar->iso8601(calendar->at(day, time)), expected);
  }
}

TEST(CalendarTest, DaysAreCalendarDays) {
  const auto york = *Calendar::named("America/New_York");
  const auto saturday = york.at(year(2026) / 3 / 7, 12h);
  EXPECT_EQ(york.addDays(saturday, 1) - saturday, 23h);
  EXPECT_EQ(york.addDays(york.addDays(saturday, 1), -1), saturday);
  EXPECT_EQ(york.iso8601(york.addDays(york.at(year(2026) / 3 / 7, 2h + 30min), 1)), "2026-03-08T03:30:00-04:00");
  EXPECT_EQ(york.weekday(saturday), 7);
  EXPECT_EQ(york.weekday(york.addDays(saturday, 1)), 1);
  EXPECT_TRUE(york.isStartOfDay(york.startOfDay(saturday)));
  EXPECT_EQ(york.local(saturday + 90s).sinceMidnight, 12h + 1min);
  EXPECT_EQ(york.iso8601(saturday + 1500us, true), "2026-03-07T12:00:00.001-05:00");
}

TEST(CalendarTest, AnAnswerDoesNotDependOnWhatWasAskedBefore) {
  const auto berlin = *Calendar::named("Europe/Berlin");
  const auto york = *Calendar::named("America/New_York");
  const auto winter = Date(std::chrono::sys_days(year(2026) / 2 / 1));
  const auto summer = Date(std::chrono::sys_days(year(2026) / 7 / 1));
  for (const auto day : {year(2026) / 3 / 27, year(2026) / 10 / 23})
    for (auto time = 0min; time < 4 * 24h; time += 10min) {
      const auto answer = [&](const Calendar& asked, Date before) {
        (void)asked.local(before);
        const auto moment = berlin.at(day, time);
        return std::pair(moment, berlin.local(moment).offset);
      };
      const auto expected = answer(york, winter);
      EXPECT_EQ(answer(berlin, winter), expected);
      EXPECT_EQ(answer(berlin, summer), expected);
    }
}

TEST(CalendarTest, UnknownZonesAreAbsent) {
  for (const auto* zone : {"", "Nowhere/City", "../../etc/passwd", "/etc/localtime"})
    EXPECT_FALSE(Calendar::named(zone)) << zone;
  EXPECT_EQ(Calendar::utc().iso8601(Date{}), "1970-01-01T00:00:00+00:00");
}

}  // namespace
}  // namespace corvane
