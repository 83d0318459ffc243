#include "core/policies/version_comparator.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

#include "base/ascii.h"

namespace corvane {

namespace {

// In the order of the places they take; a missing place is the end.
enum class Kind { versionToCome, end, word, number };

// Of versions to come, from the earliest on.
enum class Stage { dev, alpha, beta, preview, candidate };

// Points into the text that it was read from.
struct Part {
  Kind kind = Kind::end;
  Stage stage = Stage::dev;
  std::string_view text;  // a word as it is written, or digits without leading zeros

  [[nodiscard]] bool isZero() const { return kind == Kind::number && text.empty(); }
};

using Parts = std::vector<Part>;

struct Version {
  Parts release;
  Parts build;
};

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) { return lowered(c) >= 'a' && lowered(c) <= 'z'; }

bool isSilent(std::string_view text) {
  constexpr auto kSilent =
      std::to_array<std::string_view>({"v", "ver", "version", "release", "final", "stable", "ga", "build"});
  return std::ranges::any_of(kSilent, [text](std::string_view word) { return equalIgnoringCase(text, word); });
}

// The stage that a word names; a short one only when it stands right between two numbers.
std::optional<Stage> stageOf(std::string_view text, bool betweenNumbers) {
  struct Name {
    std::string_view word;
    Stage stage;
    bool isShort;
  };
  constexpr auto kNames = std::to_array<Name>({{"dev", Stage::dev, false},
                                               {"snapshot", Stage::dev, false},
                                               {"nightly", Stage::dev, false},
                                               {"canary", Stage::dev, false},
                                               {"d", Stage::dev, true},
                                               {"alpha", Stage::alpha, false},
                                               {"a", Stage::alpha, true},
                                               {"beta", Stage::beta, false},
                                               {"b", Stage::beta, true},
                                               {"preview", Stage::preview, false},
                                               {"pre", Stage::preview, false},
                                               {"ea", Stage::preview, false},
                                               {"candidate", Stage::candidate, false},
                                               {"rc", Stage::candidate, false},
                                               {"cr", Stage::candidate, false},
                                               {"fc", Stage::candidate, true}});
  for (const auto& name : kNames)
    if (equalIgnoringCase(text, name.word) && (betweenNumbers || !name.isShort)) return name.stage;
  return std::nullopt;
}

// The run of characters of one sort from `at` on.
template <class Sort>
std::string_view runAt(std::string_view text, std::size_t at, Sort sort) {
  const auto end = std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), sort);
  return text.substr(at, static_cast<std::size_t>(end - text.begin()) - at);
}

Part numberOf(std::string_view digits) {
  return {.kind = Kind::number, .text = digits.substr(std::min(digits.find_first_not_of('0'), digits.size()))};
}

// "1.0-beta" is before "1", as "1-beta" is, so zeros count for nothing before a word and at the end.
void dropTrailingZeros(Parts& parts) {
  while (!parts.empty() && parts.back().isZero()) parts.pop_back();
}

Parts partsOf(std::string_view text) {
  constexpr std::size_t kUsualParts = 6;
  Parts parts;
  if (!text.empty()) parts.reserve(kUsualParts);
  for (std::size_t at = 0; at < text.size();) {
    if (isDigit(text[at])) {
      const auto digits = runAt(text, at, isDigit);
      parts.push_back(numberOf(digits));
      at += digits.size();
    } else if (isLetter(text[at])) {
      const auto word = runAt(text, at, isLetter);
      const auto next = at + word.size();
      const bool betweenNumbers = at > 0 && isDigit(text[at - 1]) && next < text.size() && isDigit(text[next]);
      at = next;
      if (isSilent(word)) continue;
      dropTrailingZeros(parts);
      if (const auto stage = stageOf(word, betweenNumbers))
        parts.push_back({.kind = Kind::versionToCome, .stage = *stage, .text = {}});
      else
        parts.push_back({.kind = Kind::word, .text = word});
    } else {
      ++at;
    }
  }
  dropTrailingZeros(parts);
  return parts;
}

// Where the build begins: a parenthesis, a plus, or a word that begins with build.
std::size_t buildAt(std::string_view text) {
  constexpr std::string_view kWord = "build";
  const auto sign = std::min(text.find_first_of("(+"), text.size());
  for (std::size_t at = 0; at < sign; ++at) {
    const bool mayBegin = lowered(text[at]) == kWord.front() && (at == 0 || !isLetter(text[at - 1]));
    if (mayBegin && equalIgnoringCase(text.substr(at, kWord.size()), kWord)) return at;
  }
  return sign;
}

Version parse(std::string_view text) {
  const auto build = buildAt(text);
  return {.release = partsOf(text.substr(0, build)), .build = partsOf(text.substr(build))};
}

std::weak_ordering compareWords(std::string_view a, std::string_view b) {
  return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(),
                                                [](char x, char y) { return lowered(x) <=> lowered(y); });
}

std::weak_ordering comparePart(const Part& a, const Part& b) {
  // A number 0 is a place that might as well be missing.
  const auto kindA = a.isZero() ? Kind::end : a.kind;
  const auto kindB = b.isZero() ? Kind::end : b.kind;
  if (kindA != kindB) return kindA <=> kindB;
  switch (kindA) {
    case Kind::versionToCome:
      return a.stage <=> b.stage;
    case Kind::number:
      if (a.text.size() != b.text.size()) return a.text.size() <=> b.text.size();
      return a.text <=> b.text;
    case Kind::word:
      return compareWords(a.text, b.text);
    case Kind::end:
      break;
  }
  return std::weak_ordering::equivalent;
}

std::weak_ordering compareParts(const Parts& a, const Parts& b) {
  const Part missing;
  for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
    const auto order = comparePart(i < a.size() ? a[i] : missing, i < b.size() ? b[i] : missing);
    if (order != 0) return order;
  }
  return std::weak_ordering::equivalent;
}

std::weak_ordering compareBuilds(const Parts& a, const Parts& b) {
  if (a.empty() != b.empty()) return !a.empty() <=> !b.empty();
  return compareParts(a, b);
}

bool beginsWithNumber(const Parts& parts) { return !parts.empty() && parts.front().kind == Kind::number; }

bool isAtLeast(const Version& installed, const Version& available) {
  if (const auto order = compareParts(installed.release, available.release); order != 0) return order > 0;
  if (!beginsWithNumber(installed.build) || !beginsWithNumber(available.build)) return true;
  return compareParts(installed.build, available.build) >= 0;
}

// How a version is written, as far as two forms of it are told apart by that.
struct Form {
  bool dotted = false;  // more than one number stands in the text
  std::uint64_t leading = 0;

  explicit Form(std::string_view text) {
    text = text.substr(0, buildAt(text));
    for (std::size_t at = 0, numbers = 0; at < text.size();) {
      const auto digits = runAt(text, at, isDigit);
      if (!digits.empty()) {
        if (numbers == 0) leading = saturated(digits);
        dotted = ++numbers > 1;
      }
      at += std::max<std::size_t>(digits.size(), 1);
    }
  }

  // How many times the one leading number is the other; one is added for the sake of 0.
  [[nodiscard]] double distance(const Form& other) const {
    const auto mine = static_cast<double>(leading);
    const auto theirs = static_cast<double>(other.leading);
    return (std::max(mine, theirs) + 1) / (std::min(mine, theirs) + 1);
  }

 private:
  static std::uint64_t saturated(std::string_view digits) {
    constexpr std::uint64_t kHighest = std::numeric_limits<std::uint64_t>::max() / 10 - 1;
    std::uint64_t value = 0;
    for (const char digit : digits) {
      if (value >= kHighest) return kHighest;
      value = value * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    return value;
  }
};

enum class Asked { shortForm, buildForm, either };

Asked formToAsk(std::string_view shortText, std::string_view buildText, std::string_view availableText) {
  const Form shortForm(shortText);
  const Form buildForm(buildText);
  const Form available(availableText);
  if (available.dotted && shortForm.dotted != buildForm.dotted)
    return shortForm.dotted ? Asked::shortForm : Asked::buildForm;
  if (shortForm.leading == buildForm.leading) return Asked::either;
  return buildForm.distance(available) < shortForm.distance(available) ? Asked::buildForm : Asked::shortForm;
}

std::string_view textOf(const std::optional<std::string>& version) {
  return version ? trimmed(*version) : std::string_view();
}

bool satisfiesAtLeast(std::string_view shortText, std::string_view buildText, std::string_view available) {
  const auto wanted = parse(available);
  const auto current = [&](std::string_view text) { return !text.empty() && isAtLeast(parse(text), wanted); };
  if (shortText.empty() || buildText.empty()) return current(shortText) || current(buildText);
  // A form that names the very release needs no guess which of the two the maker counts by.
  const auto isThatRelease = [&](std::string_view text) {
    const auto version = parse(text);
    return compareParts(version.release, wanted.release) == 0 && isAtLeast(version, wanted);
  };
  if (isThatRelease(shortText) || isThatRelease(buildText)) return true;
  switch (formToAsk(shortText, buildText, available)) {
    case Asked::shortForm:
      return current(shortText);
    case Asked::buildForm:
      return current(buildText);
    case Asked::either:
      break;
  }
  return current(shortText) || current(buildText);
}

}  // namespace

std::weak_ordering VersionComparator::compare(std::string_view a, std::string_view b) {
  const auto left = parse(a);
  const auto right = parse(b);
  if (const auto order = compareParts(left.release, right.release); order != 0) return order;
  return compareBuilds(left.build, right.build);
}

bool VersionComparator::isAtLeast(std::string_view installed, std::string_view available) {
  return corvane::isAtLeast(parse(installed), parse(available));
}

bool VersionComparator::isEqualTo(std::string_view installed, std::string_view available) {
  return trimmed(installed) == trimmed(available);
}

bool VersionComparator::hasUpdate(const std::optional<std::string>& installed,
                                  const std::optional<std::string>& installedAlt,
                                  const std::optional<std::string>& available, VersionComparisonMethod method) {
  const auto wanted = textOf(available);
  if (wanted.empty()) return false;
  const auto shortText = textOf(installed);
  const auto buildText = textOf(installedAlt);
  if (shortText == wanted || buildText == wanted) return false;
  if (method == VersionComparisonMethod::equalTo) return true;
  if (std::ranges::none_of(wanted, isDigit)) return false;
  return !satisfiesAtLeast(shortText, buildText, wanted);
}

}  // namespace corvane
