#include "helper/own_schedule.h"

#include <algorithm>

#include "core/policies/startup_jitter.h"

namespace corvane {

std::optional<PassPlan> passPlan(const CorvaneConfiguration& config) {
  const bool ours = config.backgroundPatchClosedAppsEnabled &&
                    config.backgroundPatchClosedAppsScheduler == BackgroundPatchSchedulerMode::helperDaemon;
  if (!ours) return std::nullopt;
  return PassPlan{.interval = std::max<std::chrono::seconds>(
                      std::chrono::hours(config.backgroundPatchClosedAppsIntervalHours), kShortestPassInterval),
                  .jitterMaxMinutes = config.backgroundPatchStartupJitterMaxMinutes};
}

std::chrono::seconds firstPassDelay(const PassPlan& plan, std::optional<Date> lastPass, Date now,
                                    std::chrono::seconds shortest, Entropy& entropy) {
  auto delay = shortest;
  if (plan.jitterMaxMinutes > 0)
    delay = resolvedStartupJitterDelay(plan.jitterMaxMinutes, shortest, entropy);
  else if (lastPass && *lastPass <= now && now - *lastPass < plan.interval)
    delay = std::chrono::ceil<std::chrono::seconds>(*lastPass + plan.interval - now);
  return std::max(delay, shortest);
}

std::chrono::seconds firstDiscoveryDelay(const CorvaneConfiguration& config, std::chrono::seconds shortest,
                                         Entropy& entropy) {
  return std::max(shortest,
                  resolvedStartupJitterDelay(config.backgroundPatchStartupJitterMaxMinutes, shortest, entropy));
}

Date withinReach(Date alarm, const PassPlan& plan, Date now) {
  const auto longest =
      std::max<std::chrono::seconds>({plan.interval, std::chrono::minutes(plan.jitterMaxMinutes), kFirstOwnWork});
  return alarm - now > longest ? now + plan.interval : alarm;
}

bool isDiscoveryDue(DiscoveryFrequency frequency, std::optional<Date> byApplication, std::optional<Date> own,
                    Date now) {
  if (frequency == DiscoveryFrequency::off) return false;
  const Duration interval = frequency == DiscoveryFrequency::daily ? 24h : 7 * 24h;
  const auto recent = [&](std::optional<Date> date) { return date && *date <= now && now - *date < interval; };
  return !recent(byApplication) && !recent(own);
}

}  // namespace corvane
