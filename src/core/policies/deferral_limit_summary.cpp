#include "core/policies/deferral_limit_summary.h"

#include <algorithm>
#include <chrono>

namespace corvane {

namespace {

std::int64_t daysUntil(Date deadline, Date now) {
  if (deadline <= now) return 0;
  return std::max<std::int64_t>(std::chrono::ceil<std::chrono::days>(deadline - now - 1h).count(), 1);
}

}  // namespace

std::optional<DeferralLimitSummary> DeferralLimitSummaryBuilder::make(std::int64_t countRemaining,
                                                                      std::optional<Date> deadline, Date now) {
  if (countRemaining <= 0) {
    if (!deadline) return std::nullopt;
    return limit::DaysOnly{daysUntil(*deadline, now)};
  }
  if (!deadline) return limit::CountOnly{countRemaining};
  return limit::Both{.count = countRemaining, .deadline = *deadline, .deadlineIsNear = *deadline - now < 24h};
}

}  // namespace corvane
