// The command that tells why.
#pragma once

#include "ctl/running_command.h"

namespace corvane::ctl {

// Of the labels named, else of everything. Fails when one of them is known to nobody; the others are told all the
// same. Writes nothing.
[[nodiscard]] ExitCode runExplain(const Session& session);

}  // namespace corvane::ctl
