// What the armed moment of the workflow stands for, from the state alone.
#pragma once

#include <optional>

#include "base/date.h"
#include "workflow/status_fields.h"

namespace corvane {

// `armed` is the stored next launch. Absent unless it lies ahead. The forced install comes first: at a hard
// escalation, or once the hard deadline has come. `focusArmed`: an automatic focus deferral armed it.
[[nodiscard]] std::optional<PendingWatchpoint> pendingWatchpoint(const DeferralFields& deferral,
                                                                 std::optional<Date> armed, bool focusArmed, Date now);

[[nodiscard]] Date momentOf(const PendingWatchpoint& watchpoint);

}  // namespace corvane
