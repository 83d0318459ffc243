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

void claimState(SessionLock& lock, const Logger& log) {
  auto attempt = lock.takeShared();
  if (attempt.outcome == SessionLock::Outcome::heldByOther) {
    log.info("A corvanectl is at work; this launch goes on when it has ended.");
    attempt = lock.awaitShared();
  }
  if (attempt.outcome != SessionLock::Outcome::taken)
    log.warning(fmt::format("Could not claim the state by {} ({}); continuing.", lock.path().string(), attempt.error));
}

}  // namespace corvane
