// Versions as people and vendors write them, in one order. Fetches nothing and keeps nothing.
#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "core/records/enumerations.h"

namespace corvane {

// All functions are pure and total: any text has its place in the order. The order is this:
// - A version is a row of numbers and words. Everything but ASCII letters and digits separates, whichever sign
//   it is; case does not matter. A leading "v" and the words version, ver, release, final, stable, ga say
//   nothing and are dropped.
// - Numbers compare by value, however long. Missing places are 0, and zeros before a word count for nothing:
//   "1.10" is "1.10.0", "1.0-rc1" is "1-rc1".
// - Words of a version to come stand before the version itself, in the order dev (snapshot, nightly, canary,
//   d), alpha (a), beta (b), preview (pre, ea), candidate (rc, cr, fc): "3-beta2" is below "3". Single letters,
//   and fc, mean so only right between two numbers ("3b2"); elsewhere a letter is a patch letter: "1.0.2k" is
//   above "1.0.2" and below "1.0.2.1".
// - Other words stand behind, in alphabetical order.
// - What is in parentheses, behind a plus or behind the word build is the build. It compares last, in the same
//   way, and no build is below any.
struct VersionComparator {
  [[nodiscard]] static std::weak_ordering compare(std::string_view a, std::string_view b);

  // As `compare`, but a build counts only when both sides name one that begins with a number: "2024.3" is at
  // least "2024.3 (build 7)", for the application may not tell its build; "2024.3 (build 6)" is not.
  [[nodiscard]] static bool isAtLeast(std::string_view installed, std::string_view available);

  // The same text after trimming white space on both sides. "1.10" is not "1.10.0" here.
  [[nodiscard]] static bool isEqualTo(std::string_view installed, std::string_view available);

  // True when an available version is known and the installed one does not satisfy the method. Either form
  // (`installed` the short version, `installedAlt` the build version) may satisfy it, but at-least only asks a
  // form that is written like the available one, since build 2847 says nothing against 6.0.1: of two forms
  // whose leading numbers differ only the one nearer the available leading number counts, and a bare number
  // counts beside a dotted form only when the available version is a bare number too. With neither form known
  // an available version is an update. For at-least an available text without a digit is no known version.
  [[nodiscard]] static bool hasUpdate(const std::optional<std::string>& installed,
                                      const std::optional<std::string>& installedAlt,
                                      const std::optional<std::string>& available, VersionComparisonMethod method);
};

}  // namespace corvane
