// The claim of the session: one instance of the application, so that there is one menu-bar item.
#pragma once

#include "core/logging/logging_service.h"
#include "platform/session_lock.h"

namespace corvane {

// True: go on with the launch. False: another instance owns the session, exit 0 in silence. The lock is a
// convenience: when it cannot be made or opened, the launch goes on with a warning.
[[nodiscard]] bool claimSingleInstance(SessionLock& lock, bool launchedByAgent, const Logger& log);

}  // namespace corvane
