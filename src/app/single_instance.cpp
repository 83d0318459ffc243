#include "app/single_instance.h"

#include <fmt/format.h>

namespace corvane {

bool claimSingleInstance(SessionLock& lock, bool launchedByAgent, const Logger& log) {
  const auto attempt = lock.take();
  switch (attempt.outcome) {
    case SessionLock::Outcome::couldNotMakeFolder:
      log.warning(fmt::format("Could not create {} for the single-instance lock ({}); continuing.",
                              lock.path().parent_path().string(), attempt.error));
      return true;
    case SessionLock::Outcome::couldNotOpen:
      log.warning(fmt::format("Could not open the single-instance lock at {}; continuing.", lock.path().string()));
      return true;
    case SessionLock::Outcome::heldByOther:
      log.info("Another instance is already running; this launch will exit without a menu bar item.");
      return false;
    case SessionLock::Outcome::taken:
      break;
  }
  log.info(fmt::format("This is the only Corvane instance (launchAgent={}).", launchedByAgent));
  return true;
}

}  // namespace corvane
