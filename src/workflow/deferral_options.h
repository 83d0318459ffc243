// Which deferral lengths the prompt offers, by the settings and the deadline alone.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/calendar.h"
#include "base/date.h"
#include "core/preferences/configuration.h"
#include "core/records/enumerations.h"

namespace corvane {

// Minutes, in the order of the menu; a menu without a positive value gives the default, 60, 120 and 240. At hard
// escalation only what is at most an hour, or else the shortest; on an aggressive patch day what ends before the
// day's patching time. Always only what ends before the hard deadline, so it may be empty.
[[nodiscard]] std::vector<std::int64_t> availableDeferralOptions(const CorvaneConfiguration& config,
                                                                 DeferralEscalation escalation,
                                                                 std::optional<Date> hardDeadline, Date now,
                                                                 const Calendar& calendar);

}  // namespace corvane
