#include "workflow/deferral_options.h"

#include <algorithm>

#include "core/policies/deferral_manager.h"
#include "core/policies/patching_cadence_manager.h"

namespace corvane {

namespace {

constexpr std::int64_t kLongestAtHard = 60;

std::vector<std::int64_t> menuOf(const CorvaneConfiguration& config) {
  std::vector<std::int64_t> options;
  std::ranges::copy_if(config.deferralTimerMenu, std::back_inserter(options), [](auto minutes) { return minutes > 0; });
  if (options.empty()) options = {config.deferralTimerDefault, 60, 120, 240};
  return options;
}

std::vector<std::int64_t> shortOnes(const std::vector<std::int64_t>& options) {
  std::vector<std::int64_t> kept;
  std::ranges::copy_if(options, std::back_inserter(kept), [](auto minutes) { return minutes <= kLongestAtHard; });
  if (kept.empty()) kept = {std::ranges::min(options)};
  return kept;
}

}  // namespace

std::vector<std::int64_t> availableDeferralOptions(const CorvaneConfiguration& config, DeferralEscalation escalation,
                                                   std::optional<Date> hardDeadline, Date now,
                                                   const Calendar& calendar) {
  auto options = menuOf(config);
  if (escalation == DeferralEscalation::hard) {
    if (config.aggressivePatchDayDeferral) {
      std::ranges::sort(options);
      options =
          PatchingCadenceManager::allowedDeferralMinutesForDeadlineDay(now, options, config.patchingEndTime, calendar);
    } else {
      options = shortOnes(options);
    }
  }
  return DeferralManager::allowedDeferralMinutes(options, hardDeadline, now);
}

}  // namespace corvane
