// The steps that turn one list of keyed rows into another, so that a view moves rows and never resets.
#pragma once

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace corvane {

// Steps are applied in order; each index counts in the list as the steps before have left it.
struct ListStep {
  enum class Kind { remove, insert, move, update };
  Kind kind = Kind::update;
  std::size_t index = 0;  // of a move: where the row is
  std::size_t to = 0;     // of a move: where it will be
  friend bool operator==(const ListStep&, const ListStep&) = default;
};

// `Row` has a `key`, unique within each list, and equality. Applies the steps to `rows` as it finds them and
// tells each to `apply` before (`Step`, the new row) and after through the two callbacks of a view model.
// Linear when the order stands, quadratic at worst when all rows move.
template <class Row, class Before, class After>
void applyKeyedDiff(std::vector<Row>& rows, const std::vector<Row>& target, Before&& before, After&& after) {
  std::unordered_set<std::string_view> wanted;
  for (const auto& row : target) wanted.insert(row.key);

  const auto step = [&](ListStep what, auto&& change) {
    before(what);
    change();
    after(what);
  };
  for (std::size_t i = rows.size(); i-- > 0;) {
    if (!wanted.contains(rows[i].key))
      step({.kind = ListStep::Kind::remove, .index = i}, [&] { rows.erase(rows.begin() + static_cast<long>(i)); });
  }
  for (std::size_t i = 0; i < target.size(); ++i) {
    const auto from = static_cast<long>(i);
    if (i >= rows.size() || rows[i].key != target[i].key) {
      const auto found = std::find_if(rows.begin() + std::min<long>(from, static_cast<long>(rows.size())), rows.end(),
                                      [&](const Row& row) { return row.key == target[i].key; });
      if (found == rows.end()) {
        step({.kind = ListStep::Kind::insert, .index = i}, [&] { rows.insert(rows.begin() + from, target[i]); });
        continue;
      }
      const auto at = static_cast<std::size_t>(found - rows.begin());
      step({.kind = ListStep::Kind::move, .index = at, .to = i},
           [&] { std::rotate(rows.begin() + from, found, found + 1); });
    }
    if (!(rows[i] == target[i])) step({.kind = ListStep::Kind::update, .index = i}, [&] { rows[i] = target[i]; });
  }
}

// The steps alone.
template <class Row>
[[nodiscard]] std::vector<ListStep> keyedDiff(std::vector<Row> rows, const std::vector<Row>& target) {
  std::vector<ListStep> steps;
  applyKeyedDiff(
      rows, target, [&](const ListStep& step) { steps.push_back(step); }, [](const ListStep&) {});
  return steps;
}

}  // namespace corvane
