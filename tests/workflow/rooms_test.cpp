// Rooms on their own, where what matters is which arrows they send out and in which order.
#include "recording_crossings.h"
#include "workflow/patch_cycle.h"
#include "workflow/side_effect_sequence.h"
#include "workflow_fixture.h"

namespace corvane {
namespace {

using Calls = std::vector<std::string>;

class RoomTest : public WorkflowTest {
 protected:
  StatusFields state;
  RecordingCrossings crossings;
  OperationGate gate{time.main(), state.gate, [] {}};
  UserMessages messages{state.messages, [] {}};
  RoomContext context{services, state, gate, messages, crossings, Logger(log, "StatusViewModel")};
};

TEST_F(RoomTest, anOpenPromptIsClosedBeforeARetryIsArmed) {
  PatchCycle cycle(context);
  state.deferral.showDeferralPrompt = true;
  const auto watcher = notifications.observe<CorvaneNextAutoLaunchDidChange>(
      [this](const auto&) { crossings.calls.emplace_back("armed"); });
  cycle.applyPatchErrorFollowUp(DiscoveryOperation::patchAll, {label("a")}, "Failed: a");
  EXPECT_EQ(crossings.calls, (Calls{"dismissDeferralPrompt", "armed"}));
  EXPECT_EQ(state.messages.statusMessage, "An update failed. Corvane will try again in 60 minutes.");
  EXPECT_TRUE(said(
      "Update All finished with errors; next attempt at 2026-11-01T13:00:00+00:00 (DeferralTimerError=60 minutes)."));
}

TEST_F(RoomTest, aConfiguredTitleStandsInTheRetryText) {
  domains.setManaged({{"AppTitle", PlistValue("Acme {0} Updates")}});
  PatchCycle(context).applyPatchErrorFollowUp(DiscoveryOperation::patchAll, {label("a")}, "");
  EXPECT_EQ(state.messages.statusMessage, "An update failed. Acme {0} Updates will try again in 60 minutes.");
}

TEST_F(RoomTest, aCycleIsClosedOrMarkedInTheOrderOfItsEffects) {
  PatchCycle cycle(context);
  state.deferral.showDeferralPrompt = true;
  cycle.completePatchingCycle();
  EXPECT_EQ(crossings.calls, (Calls{"dismissDeferralPrompt", "deadlineSettled", "forgetClosedAppsAttempt"}));
  crossings.calls.clear();
  domains.setManaged({{"WorkflowUpdateAllErrorCompletesPatching", PlistValue(true)}});
  cycle.applyPatchErrorFollowUp(DiscoveryOperation::patchAll, {label("a")}, "Failed: a");
  EXPECT_EQ(crossings.calls,
            (Calls{"dismissDeferralPrompt", "forgetClosedAppsAttempt", "refreshDeadlineDisplay", "recomputeCounts"}));
  EXPECT_EQ(state.messages.statusMessage,
            "Patching is marked complete for this cycle. Failed updates wait until the next reset.");
}

TEST_F(RoomTest, theGateOfTheSequenceDecidesWhatCountsAndFailuresLeadTo) {
  using Gate = OpenAppsNotificationGate;
  SideEffectSequence sequence(context, state.sideEffects);
  auto& at = state.sideEffects.openAppsNotificationGate;
  sequence.pendingUpdatesCounted();
  EXPECT_EQ(sideEffects.started, 1);
  at = Gate::patchingClosedApps;
  sequence.pendingUpdatesCounted();
  sequence.refreshFailed();
  EXPECT_EQ(sideEffects.started + sideEffects.delivered, 1) << "the pass over closed applications goes on";
  at = Gate::refreshThenNotify;
  sequence.pendingUpdatesCounted();
  EXPECT_EQ(at, Gate::idle);
  EXPECT_EQ(sideEffects.delivered, 1);
  EXPECT_TRUE(said("Closed-app pass finished; delivering the deferral."));
  sequence.refreshFailed();
  EXPECT_EQ(sideEffects.delivered, 1);
  at = Gate::refreshThenNotify;
  sequence.refreshFailed();
  EXPECT_EQ(sideEffects.delivered, 2);
  EXPECT_TRUE(said("Post-patch refresh failed; delivering the deferral."));
}

}  // namespace
}  // namespace corvane
