// The commands about putting updates off: what the deadline is, a deferral, and the decision of Update All.
#pragma once

#include "ctl/running_command.h"

namespace corvane::ctl {

// Asks as the button does: checks what is pending, then installs, or says what it would ask.
[[nodiscard]] ExitCode runUpdateAll(const Session& session);

// Refused with the limit and its time where the prompt would refuse.
[[nodiscard]] ExitCode runDefer(const Session& session);

// Limits, what is used of them, what is armed, which lengths are on offer. Writes nothing.
[[nodiscard]] ExitCode runDeadline(const Session& session);

}  // namespace corvane::ctl
