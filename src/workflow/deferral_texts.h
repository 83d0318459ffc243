// How the prompt and the dashboard word limits, durations and what is armed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/preferences/configuration.h"
#include "core/records/deferral_records.h"
#include "platform/locale.h"
#include "workflow/status_fields.h"

namespace corvane {

// "2 days" for a multiple of 1440, else "2 hours" for a multiple of 60, else "90 minutes"; below zero "0 days".
[[nodiscard]] std::string deferralDurationText(std::int64_t minutes, const Locale& locale);

// "2 deferrals remaining, or until Nov 24, 2026, 5:00 PM, whichever comes first."
[[nodiscard]] std::string limitSummaryText(const DeferralLimitSummary& summary, const Locale& locale);

// Which limit stands behind a hard deadline.
[[nodiscard]] std::string hardDeadlineText(std::optional<HardDeadlineTrigger> trigger);
// The same, from what is stored and set: a stored date counts only with a limit of days.
[[nodiscard]] std::string hardDeadlineText(const DeferralInfo& info, const CorvaneConfiguration& config, Date now);

// "Deferred — you'll be reminded in 3 hours", with the remaining time as its caller has worded it.
[[nodiscard]] std::string watchpointText(const PendingWatchpoint& watchpoint, std::string_view remaining,
                                         bool focusNotifications);

}  // namespace corvane
