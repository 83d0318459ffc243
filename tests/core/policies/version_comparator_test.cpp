#include "core/policies/version_comparator.h"

#include "support/test.h"

namespace corvane {
namespace {

using enum VersionComparisonMethod;

struct Pair {
  const char* a;
  const char* b;
};

TEST(VersionComparator, PlacesVersionsThatDifferInTheirOrder) {
  const Pair ascending[] = {{"1.9", "1.10"},      {"1.10.0", "1.10.1"},  {"0.9", "1"},          {"", "1"},
                            {"0.1", "word"},      {"v3-beta2", "3"},     {"3.0-beta", "3.0.1"}, {"3.0-pre", "3.0-rc1"},
                            {"3.0rc1", "3.0"},    {"3.0b2", "3.0"},      {"2.9", "3.0b2"},      {"1.0.2", "1.0.2k"},
                            {"1.0.2k", "1.0.2l"}, {"1.0.2k", "1.0.2.1"}, {"2024a", "2024b"},    {"1.2_3", "1-2.4"}};
  const Pair longer[] = {{"v3-beta2", "3-beta10"},      {"3.0-dev", "3.0-alpha"},       {"3.0 Alpha 4", "3.0 BETA 1"},
                         {"3.0-beta.2", "3.0-preview"}, {"2024.3", "2024.3 (build 7)"}, {"2024.3 build 7", "2024.3.1"},
                         {"1.2.3+9", "1.2.3+10"}};
  const auto expectOrder = [](const std::string& less, const std::string& more) {
    EXPECT_TRUE(VersionComparator::compare(less, more) < 0) << less << " / " << more;
    EXPECT_TRUE(VersionComparator::compare(more, less) > 0) << less << " / " << more;
  };
  for (const auto& [less, more] : ascending) expectOrder(less, more);
  for (const auto& [less, more] : longer) expectOrder(less, more);
  expectOrder("2024.3 (build 7)", "2024.3 (build 10)");
  const std::string nines(37, '9');
  expectOrder(nines + "8", nines + "9");
  expectOrder("9", "1" + std::string(37, '0'));
}

TEST(VersionComparator, TakesSpellingsOfOneVersionAsEqual) {
  const Pair equal[] = {{"1.10", "1.10.0"},     {"1", "1.0.0.0"},
                        {"v2.1", "2.1"},        {"V2.1", "Version 2.1"},
                        {"007.01", "7.1"},      {"1-2_3", "1.2.3"},
                        {"3.0-RC1", "3rc1"},    {"3.0.0-beta", "3-beta"},
                        {"1.0a3", "1a3"},       {"2024.3(7)", "2024.3 build 7"},
                        {"5.0 final", "5"},     {"", "0"},
                        {"1.0+5", "1 (5)"},     {"1.2.3 ", " 1.2.3"},
                        {"1.0b2", "1.0-beta.2"}};
  for (const auto& [a, b] : equal) EXPECT_TRUE(VersionComparator::compare(a, b) == 0) << a << " / " << b;
}

// Every text that can be put together from the pieces has a place, and the places are an order.
TEST(VersionComparator, IsATotalOrderOverGeneratedTexts) {
  const std::string heads[] = {"", "v", "1", "01", "1.0", "10", "18446744073709551617", "2024.3"};
  const std::string tails[] = {
      "",    ".0",    ".1", "-beta", "b2", "-rc.1", "k", "-lts", "+7", " (8)", ".0.0.5", " build x", "\xF0\x9F\x98\x80",
      "(((", "..-..", ".0k"};
  std::vector<std::string> texts;
  for (const auto& head : heads)
    for (const auto& tail : tails) texts.push_back(head + tail);

  const auto count = texts.size();
  std::vector<int> order(count * count);  // -1, 0 or 1
  for (std::size_t a = 0; a < count; ++a) {
    for (std::size_t b = 0; b < count; ++b) {
      const auto compared = VersionComparator::compare(texts[a], texts[b]);
      order[a * count + b] = compared < 0 ? -1 : static_cast<int>(compared > 0);
    }
  }
  for (std::size_t a = 0; a < count; ++a) {
    ASSERT_EQ(order[a * count + a], 0) << texts[a];
    for (std::size_t b = 0; b < count; ++b) {
      ASSERT_EQ(order[a * count + b], -order[b * count + a]) << texts[a] << " / " << texts[b];
      if (order[a * count + b] > 0) continue;
      for (std::size_t c = 0; c < count; ++c) {
        if (order[b * count + c] <= 0 && order[a * count + c] > 0)
          FAIL() << texts[a] << " / " << texts[b] << " / " << texts[c];
      }
    }
  }
}

TEST(VersionComparator, AtLeastLooksAtABuildOnlyWhenBothSidesNameOne) {
  EXPECT_TRUE(VersionComparator::isAtLeast("2024.3", "2024.3 (build 7)"));
  EXPECT_TRUE(VersionComparator::isAtLeast("2024.3 (build 7)", "2024.3"));
  EXPECT_TRUE(VersionComparator::isAtLeast("2024.3 (build 7)", "2024.3 (build 7)"));
  EXPECT_FALSE(VersionComparator::isAtLeast("2024.3 (build 6)", "2024.3 (build 7)"));
  EXPECT_TRUE(VersionComparator::isAtLeast("1.0+abc", "1.0+def")) << "a hash is no order";
}

TEST(VersionComparator, FindsUpdatesByEitherFormOfTheInstalledVersion) {
  const std::tuple<std::optional<std::string>, std::optional<std::string>, std::optional<std::string>, bool, bool>
      cases[] = {
          // Nothing known to be available is no update.
          {"1.0", "1", std::nullopt, false, false},
          {"1.0", "1", " ", false, false},
          {"1.0", std::nullopt, "unknown", false, true},
          // Nothing known to be installed is one.
          {std::nullopt, std::nullopt, "2.0", true, true},
          {"", "", "2.0", true, true},
          {"1.9", std::nullopt, "1.10", true, true},
          {"1.10", std::nullopt, "1.10.0", false, true},
          {"2.0", std::nullopt, "1.10", false, true},
          {" 2.0\n", std::nullopt, "2.0", false, false},
          {std::nullopt, "4700", "4711", true, true},
          {"v3-beta2", std::nullopt, "3", true, true},
          {"3.2", "4700", "4711", true, true},
          {"3.2", "4711", "4711", false, false},
          {"3.2", "4712", "4711", false, true},
          {"3.2", "100", "99", false, true},
          {"2024.1", "1490", "1500", true, true},
          {"17.2017", "17.0.1", "17.0.2", false, true},
          // A build number says nothing against a version of the other kind.
          {"5.0", "2847", "6.0.1", true, true},
          {"1.2", "3", "2.0", true, true},
          {"139.0.7258.139", "7258.139", "139.0.7258.155", true, true},
          {"5.0", "1234", "6", true, true},
          {"2023.1", "5512", "2024", true, true},
          // A form that names the very release, however the other is written.
          {"5", "1.0", "5.0", false, true},
          {"16", "1.0.0", "16.0", false, true},
          {"1.2.3", "5", "5.0.0", false, true},
          {"4", "1.0", "5.0", true, true},
          // Two forms of one kind: either will do.
          {"2.9", "2.10.0", "2.10", false, true},
          {"2.10", "2.9.7", "2.10", false, false},
          {"1.0", "2.0", "2.0", false, false},
      };
  for (const auto& [installed, build, available, atLeast, equalTo] : cases) {
    const auto name = installed.value_or("-") + " (" + build.value_or("-") + ") / " + available.value_or("-");
    EXPECT_EQ(VersionComparator::hasUpdate(installed, build, available, isAtLeast), atLeast) << name;
    EXPECT_EQ(VersionComparator::hasUpdate(installed, build, available, VersionComparisonMethod::equalTo), equalTo)
        << name;
  }
}

TEST(VersionComparator, EqualToComparesTheTextExactly) {
  EXPECT_TRUE(VersionComparator::isEqualTo(" 1.10\t", "1.10"));
  EXPECT_FALSE(VersionComparator::isEqualTo("1.10", "1.10.0"));
  EXPECT_FALSE(VersionComparator::isEqualTo("1.0-RC1", "1.0-rc1"));
}

}  // namespace
}  // namespace corvane
