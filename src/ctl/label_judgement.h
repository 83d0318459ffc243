// What can be done with the labels that a command names. Pure functions of what is known.
#pragma once

#include <string>
#include <vector>

#include "core/preferences/configuration.h"
#include "core/records/app_info.h"
#include "workflow/app_facts.h"

namespace corvane::ctl {

// What is wrong with `named` when only `found` was found: sentences on those that the settings ignore, on those of
// `known` that a check had no answer for, and on those that nobody knows. Empty when nothing is wrong.
[[nodiscard]] std::string labelTrouble(const Labels& named, const Labels& found, const Apps& known,
                                       const CorvaneConfiguration& config);

// What of the labels named can be updated, and a sentence on each that cannot.
struct WantedUpdates {
  Labels labels;
  std::vector<std::string> upToDate;
  std::vector<std::string> refused;
};

// With none named: all that are pending and not held back; where there are none, applications that were never
// checked are a refusal, for nobody knows that they are up to date.
[[nodiscard]] WantedUpdates wantedUpdates(const Labels& named, const Apps& apps, const AppFacts& facts);

}  // namespace corvane::ctl
