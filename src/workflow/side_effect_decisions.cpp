#include "workflow/side_effect_decisions.h"

#include <algorithm>

namespace corvane {

StagingStep decideStaging(const StagingFacts& facts) {
  if (facts.labels.empty()) return StagingStep::skip;
  if (facts.inFlight == facts.labels) return StagingStep::wait;
  const bool alreadyStaged = facts.staged && std::ranges::includes(*facts.staged, facts.labels);
  return alreadyStaged ? StagingStep::skip : StagingStep::request;
}

ClosedAppsStep decideClosedApps(const ClosedAppsFacts& facts) {
  if (facts.closed.empty()) return ClosedAppsStep::deliver;
  if (facts.attempted == facts.closed) return ClosedAppsStep::deliverWithoutRetry;
  return facts.mayStart ? ClosedAppsStep::startPass : ClosedAppsStep::deliver;
}

AfterPass decideAfterPass(ClosedAppsOutcome outcome, bool isLoading) {
  switch (outcome) {
    case ClosedAppsOutcome::helperPassRunning:
      return AfterPass::deliverHandledElsewhere;
    case ClosedAppsOutcome::notRun:
      return AfterPass::deliverAfreshLook;
    case ClosedAppsOutcome::failed:
    case ClosedAppsOutcome::succeeded:
      break;
  }
  return isLoading ? AfterPass::waitForRefresh : AfterPass::deliver;
}

bool shouldStageBeforeNotification(const NewsFacts& facts) {
  return facts.stageUpdates && !facts.allStaged && facts.notificationsEnabled && facts.open >= 1 &&
         facts.notified < facts.open && !facts.isActive;
}

bool shouldPresentDeferralDialog(const NewsFacts& facts) {
  const bool isArmedAhead = facts.armed && *facts.armed > facts.now;
  return facts.open > 0 && !facts.showsPrompt && !isArmedAhead && !facts.cycleComplete && facts.notified < facts.open;
}

}  // namespace corvane
