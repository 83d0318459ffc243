// Pure helpers of the pipeline: what a helper's records are turned into before they count.
#pragma once

#include <string>

#include "core/records/app_info.h"

namespace corvane {

// A record without a latest version is one whose check failed, unless it is not checked at all: a copy of the
// App Store, or one signed by another team.
[[nodiscard]] Apps normalised(const Apps& records);

[[nodiscard]] Labels labelsOf(const Apps& apps);

// Labels of `records` that `kept` does not hold, in their order.
[[nodiscard]] Labels labelsMissingFrom(const Apps& kept, const Apps& records);

// What is said when an inventory is there and its versions are looked up next. Localised.
[[nodiscard]] std::string discoveryCompleteText(std::size_t count);

}  // namespace corvane
