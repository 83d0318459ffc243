// Labels that a peer named, for a line of the log.
#pragma once

#include <string>

#include "core/records/app_info.h"

namespace corvane {

// A request may name thousands of labels; told in full, a few requests would rotate all else out of the log.
inline constexpr std::size_t kLabelsInALine = 5;

// The first labels, and how many more there are: "a, b, c, d, e and 12 more".
[[nodiscard]] std::string brief(const Labels& labels);

}  // namespace corvane
