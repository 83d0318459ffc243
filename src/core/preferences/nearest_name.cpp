#include "core/preferences/nearest_name.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "base/ascii.h"
#include "base/utf8.h"

namespace corvane {
namespace {

constexpr std::size_t kLongestName = 100;
constexpr std::size_t kMostShown = 60;  // bytes

std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::swap(beforeLast, last);
    std::swap(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = lowered(a[i - 1]) == lowered(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0U : 1U)});
      if (i > 1 && j > 1 && lowered(a[i - 1]) == lowered(b[j - 2]) && lowered(a[i - 2]) == lowered(b[j - 1]))
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row[b.size()];
}

}  // namespace

std::string nearestName(std::string_view text, const Names& names) {
  if (text.size() > kLongestName) return {};
  std::string nearest;
  auto least = std::numeric_limits<std::size_t>::max();
  names([&](std::string_view name) {
    const auto steps = distance(text, name);
    if (steps >= least || steps > std::max<std::size_t>(1, name.size() / 4)) return;
    least = steps;
    nearest = name;
  });
  return nearest;
}

std::string shown(std::string_view text) {
  std::string clean;
  for (const char c : validUtf8(text.substr(0, std::min(text.size(), 2 * kMostShown)))) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F)
      clean += "\uFFFD";
    else
      clean += c;
  }
  if (clean.size() <= kMostShown) return clean;
  auto end = kMostShown;
  while (end > 0 && (static_cast<unsigned char>(clean[end]) & 0xC0) == 0x80) --end;
  return clean.substr(0, end) + "…";
}

}  // namespace corvane
