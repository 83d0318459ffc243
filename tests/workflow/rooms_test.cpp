// Rooms on their own, where what matters is which arrows they send out and in which order.
#include "recording_crossings.h"
#include "workflow/patch_cycle.h"
#include "workflow/pending_update_side_effects.h"
#include "workflow_fixture.h"

namespace corvane {
namespace {

using Calls = std::vector<std::string>;

struct RoomTest : WorkflowTest {
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
  manage({{"AppTitle", PlistValue("Acme {0} Updates")}});
  PatchCycle(context).applyPatchErrorFollowUp(DiscoveryOperation::patchAll, {label("a")}, "");
  EXPECT_EQ(state.messages.statusMessage, "An update failed. Acme {0} Updates will try again in 60 minutes.");
}

TEST_F(RoomTest, aCycleIsClosedOrMarkedInTheOrderOfItsEffects) {
  PatchCycle cycle(context);
  state.deferral.showDeferralPrompt = true;
  cycle.completePatchingCycle();
  EXPECT_EQ(crossings.calls, (Calls{"dismissDeferralPrompt", "deadlineSettled", "forgetClosedAppsAttempt"}));
  crossings.calls.clear();
  manage({{"WorkflowUpdateAllErrorCompletesPatching", PlistValue(true)}});
  cycle.applyPatchErrorFollowUp(DiscoveryOperation::patchAll, {label("a")}, "Failed: a");
  EXPECT_EQ(crossings.calls,
            (Calls{"dismissDeferralPrompt", "forgetClosedAppsAttempt", "refreshDeadlineDisplay", "recomputeCounts"}));
  EXPECT_EQ(state.messages.statusMessage,
            "Patching is marked complete for this cycle. Failed updates wait until the next reset.");
}

TEST_F(RoomTest, theGateOfTheSequenceDecidesWhatCountsAndFailuresLeadTo) {
  using Gate = OpenAppsNotificationGate;
  PendingUpdateSideEffects effects(context, state.sideEffects);
  auto& at = state.sideEffects.openAppsNotificationGate;
  const auto told = [&] { return notices.updates.size(); };
  effects.pendingUpdatesCounted();
  EXPECT_EQ(told(), 1U);
  effects.refreshFailed();
  at = Gate::patchingClosedApps;
  effects.pendingUpdatesCounted();
  effects.refreshFailed();
  EXPECT_EQ(told(), 1U) << "the pass over closed applications goes on";
  at = Gate::refreshThenNotify;
  effects.pendingUpdatesCounted();
  EXPECT_EQ(told(), 2U);
  EXPECT_EQ(at, Gate::idle);
  at = Gate::refreshThenNotify;
  effects.refreshFailed();
  EXPECT_EQ(told(), 3U);
  EXPECT_EQ(at, Gate::idle);
}

TEST_F(RoomTest, aDeliveryThatMeetsTheSameDownloadLeavesItTheNotification) {
  manage({{"WorkflowStageUpdates", PlistValue(true)}});
  PendingUpdateSideEffects effects(context, state.sideEffects);
  crossings.answeredFacts.hasAppStoreReceipt = [](const AppInfo&) { return false; };
  processes.setReadable(false);
  state.inventory.apps = {outdated("a")};
  state.sideEffects.openAppsNotificationGate = OpenAppsNotificationGate::refreshThenNotify;
  state.sideEffects.openAppsNotifyStageLabels = LabelSet{label("a")};
  effects.pendingUpdatesCounted();
  EXPECT_EQ(helper.runsAsked, 0);
  EXPECT_TRUE(notices.updates.empty());
}

}  // namespace
}  // namespace corvane
