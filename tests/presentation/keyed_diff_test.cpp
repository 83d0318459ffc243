#include "presentation/keyed_diff.h"

#include <random>

#include "support/test.h"

namespace corvane {
namespace {

struct Row {
  std::string key;
  int value = 0;
  friend bool operator==(const Row&, const Row&) = default;
};
using Rows = std::vector<Row>;
using Kind = ListStep::Kind;

// What a view makes of the steps, by their numbers alone; fresh values come from the target by key.
Rows replayed(Rows rows, const Rows& target, const std::vector<ListStep>& steps) {
  for (const auto& step : steps) {
    const auto at = rows.begin() + static_cast<std::ptrdiff_t>(step.index);
    switch (step.kind) {
      case Kind::remove:
        rows.erase(at);
        break;
      case Kind::insert:
        rows.insert(at, target[step.index]);
        break;
      case Kind::move:
        EXPECT_LT(step.to, step.index) << "a row only ever moves up";
        std::rotate(rows.begin() + static_cast<std::ptrdiff_t>(step.to), at, at + 1);
        break;
      case Kind::update:
        *at = target[step.index];
        break;
    }
  }
  return rows;
}

TEST(KeyedDiff, TellsTheSmallChangesOfAListAsTheyAre) {
  const Rows rows{{"a"}, {"b"}, {"c"}};
  using Steps = std::vector<ListStep>;
  EXPECT_EQ(keyedDiff(rows, rows), Steps{});
  EXPECT_EQ(keyedDiff(rows, {{"a"}, {"b", 1}, {"c"}}), (Steps{{.kind = Kind::update, .index = 1}}));
  EXPECT_EQ(keyedDiff(rows, {{"a"}, {"c"}}), (Steps{{.kind = Kind::remove, .index = 1}}));
  EXPECT_EQ(keyedDiff(rows, {{"a"}, {"x"}, {"b"}, {"c"}}), (Steps{{.kind = Kind::insert, .index = 1}}));
  EXPECT_EQ(keyedDiff(rows, {{"c"}, {"a"}, {"b"}}), (Steps{{.kind = Kind::move, .index = 2, .to = 0}}));
  EXPECT_EQ(keyedDiff(Rows{}, {{"a"}}), (Steps{{.kind = Kind::insert, .index = 0}}));
  EXPECT_EQ(keyedDiff(rows, {}).size(), 3U);
}

TEST(KeyedDiff, LeadsFromAnyListToAnyOther) {
  std::mt19937 random(7);
  const auto list = [&] {
    Rows rows;
    for (const char key : std::string("abcdefghij"))
      if (random() % 3 != 0) rows.push_back({std::string(1, key), static_cast<int>(random() % 2)});
    std::ranges::shuffle(rows, random);
    return rows;
  };
  for (int round = 0; round < 2000; ++round) {
    const auto from = list();
    const auto to = list();
    ASSERT_EQ(replayed(from, to, keyedDiff(from, to)), to);
  }
}

}  // namespace
}  // namespace corvane
