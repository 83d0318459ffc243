// When the helper works by itself. Pure: dates and settings in, dates out.
#pragma once

#include <chrono>
#include <optional>

#include "base/date.h"
#include "core/preferences/configuration.h"
#include "platform/entropy.h"

namespace corvane {

// Nothing is begun sooner than this after the start of the helper, or after the settings began to ask for it.
inline constexpr std::chrono::seconds kFirstOwnWork = 300s;
inline constexpr std::chrono::seconds kShortestPassInterval = 1h;
// After a scheduled discovery that failed, or that found no network.
inline constexpr Duration kDiscoveryRetry = 1h;

// What the settings ask for.
struct PassPlan {
  std::chrono::seconds interval{};
  std::int64_t jitterMaxMinutes = 0;
  friend bool operator==(const PassPlan&, const PassPlan&) = default;
};

// Absent while background patching is off or the application's.
[[nodiscard]] std::optional<PassPlan> passPlan(const CorvaneConfiguration& config);

// From now to the first pass: what is left of the interval since the last one, or the shortest wait. With jitter a
// random part of that, so that a fleet spreads, whenever the last one was.
[[nodiscard]] std::chrono::seconds firstPassDelay(const PassPlan& plan, std::optional<Date> lastPass, Date now,
                                                  std::chrono::seconds shortest, Entropy& entropy);

// The date of an alarm that a clock set back has put out of reach is taken in to one interval from now.
[[nodiscard]] Date withinReach(Date alarm, const PassPlan& plan, Date now);

// From the start of the helper to the first scheduled discovery.
[[nodiscard]] std::chrono::seconds firstDiscoveryDelay(const CorvaneConfiguration& config,
                                                       std::chrono::seconds shortest, Entropy& entropy);

// Whether a whole interval has gone by since the last full check, the application's or our own. A date ahead of now is
// of a clock that was set back since, and counts as none.
[[nodiscard]] bool isDiscoveryDue(DiscoveryFrequency frequency, std::optional<Date> byApplication,
                                  std::optional<Date> own, Date now);

}  // namespace corvane
