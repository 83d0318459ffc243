// The claims of the application: one instance of it, so that there is one menu-bar item, and its part in the stored
// state.
#pragma once

#include "core/logging/logging_service.h"
#include "platform/session_lock.h"

namespace corvane {

// True: go on with the launch. False: another instance owns the session, exit 0 in silence. The lock is a
// convenience: when it cannot be made or opened, the launch goes on with a warning.
[[nodiscard]] bool claimSingleInstance(SessionLock& lock, bool launchedByAgent, const Logger& log);

// Call it after the instance is claimed and before the model is built, which loads the state. Waits until a
// corvanectl that writes has ended, with a line in the log; none begins while this process lives. Like the other
// claim it never stops a launch.
void claimState(SessionLock& lock, const Logger& log);

}  // namespace corvane
