#include "workflow/watchpoint.h"

namespace corvane {

std::optional<PendingWatchpoint> pendingWatchpoint(const DeferralFields& deferral, std::optional<Date> armed,
                                                   bool focusArmed, Date now) {
  if (!armed || *armed <= now) return std::nullopt;
  const auto deadline = deferral.currentHardDeadlineDate;
  if (deferral.currentDeferralEscalation == DeferralEscalation::hard || (deadline && *deadline <= now))
    return watchpoint::Enforcement{*armed};
  if (focusArmed) return watchpoint::FocusDeferral{*armed};
  return watchpoint::DeferralReminder{*armed};
}

Date momentOf(const PendingWatchpoint& watchpoint) {
  return std::visit([](const auto& kind) { return kind.at; }, watchpoint);
}

}  // namespace corvane
