// Checks a file that an administrator is about to deploy. Asks the label catalogue of this machine where there is one,
// and touches nothing.
#pragma once

#include "ctl/running_command.h"

namespace corvane::ctl {

// Fails when the file cannot be looked at, and when a finding is an error.
[[nodiscard]] ExitCode runValidate(const Command& command, const World& world);

}  // namespace corvane::ctl
