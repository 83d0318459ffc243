// What a launch does about the root helper's registration.
#pragma once

#include "core/client/helper_installation_service.h"
#include "core/logging/logging_service.h"

namespace corvane {

// Registers a helper that is not known yet, and remembers which binary is the registered one. Neither outcome stops the
// launch; both are told to the log, which speaks for "Corvane". Main thread.
void registerHelperAtLaunch(HelperInstallationService& installation, const Logger& log);

}  // namespace corvane
