#include "workflow/side_effect_sequence.h"

namespace corvane {

void SideEffectSequence::pendingUpdatesCounted() {
  switch (fields_.openAppsNotificationGate) {
    case OpenAppsNotificationGate::idle:
      return c_.services.sideEffects.runPendingUpdateSideEffects();
    case OpenAppsNotificationGate::patchingClosedApps:
      return;
    case OpenAppsNotificationGate::refreshThenNotify:
      return deliverNow("Closed-app pass finished; delivering the deferral.");
  }
}

void SideEffectSequence::refreshFailed() {
  if (fields_.openAppsNotificationGate == OpenAppsNotificationGate::refreshThenNotify)
    deliverNow("Post-patch refresh failed; delivering the deferral.");
}

void SideEffectSequence::deliverNow(std::string_view reason) {
  fields_.openAppsNotificationGate = OpenAppsNotificationGate::idle;
  c_.log.info(reason);
  c_.services.sideEffects.deliverDeferral(false, false);
}

void SideEffectSequence::forgetStagedLabels() {
  ++fields_.openAppsNotifyStageGeneration;
  fields_.openAppsNotifyStageLabels.reset();
  fields_.labelsStagedBeforeDeferral.reset();
}

}  // namespace corvane
