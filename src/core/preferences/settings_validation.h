// What is wrong with the settings of a profile, before a fleet gets it. Pure: from a dictionary to findings. Values of
// secret settings, and of keys that nobody knows, are in no finding.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/plist.h"

namespace corvane {

struct SettingFinding {
  enum class Severity {
    error,   // a value that does not count, or something asked for that cannot come
    warning  // it works, but hardly as anybody meant it
  };
  Severity severity = Severity::error;
  std::string key;
  std::string reason;
  std::string fix;
  friend bool operator==(const SettingFinding&, const SettingFinding&) = default;
};
using SettingFindings = std::vector<SettingFinding>;

// Whether a label of the catalogue fits a name or pattern; empty where there is no catalogue.
using FitsALabel = std::function<bool(std::string_view)>;

// Every finding on what the managed domain would hold: one at most for a key by itself, then those on keys together.
// Errors come first.
[[nodiscard]] SettingFindings validateSettings(const PlistDict& managed, const FitsALabel& fitsALabel = nullptr);

// The two halves. Combinations are judged only where the keys in them are well by themselves.
[[nodiscard]] SettingFindings checkSingleSettings(const PlistDict& managed, const FitsALabel& fitsALabel);
[[nodiscard]] SettingFindings checkCombinations(const PlistDict& managed);

}  // namespace corvane
