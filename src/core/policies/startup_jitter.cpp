#include "core/policies/startup_jitter.h"

#include <algorithm>

namespace corvane {

std::chrono::seconds resolvedStartupJitterDelay(std::int64_t jitterMaxMinutes, std::chrono::seconds fallback,
                                                Entropy& entropy) {
  constexpr std::int64_t kWeekOfMinutes = 7 * 24 * 60;
  if (jitterMaxMinutes <= 0) return fallback;
  const auto most = static_cast<std::uint64_t>(std::min(jitterMaxMinutes, kWeekOfMinutes)) * 60;
  return std::chrono::seconds(entropy.below(most + 1));
}

}  // namespace corvane
