// Spreads the first background work of a fleet over time.
#pragma once

#include <chrono>
#include <cstdint>

#include "platform/entropy.h"

namespace corvane {

// A random delay of whole seconds, from 0 to `jitterMaxMinutes` with both ends, when that is above 0; else
// `fallback`. A maximum above a week counts as a week.
[[nodiscard]] std::chrono::seconds resolvedStartupJitterDelay(std::int64_t jitterMaxMinutes,
                                                              std::chrono::seconds fallback, Entropy& entropy);

}  // namespace corvane
