// What pending updates set off, one step after the other: downloads, then a pass over the closed applications, then
// word and prompt about those that stayed open. It downloads, patches and asks nothing itself.
#pragma once

#include <functional>
#include <string_view>

#include "base/lifeline.h"
#include "workflow/closed_apps_patcher.h"
#include "workflow/open_apps_snapshot.h"
#include "workflow/room_context.h"
#include "workflow/side_effect_decisions.h"

namespace corvane {

class PendingUpdateSideEffects {
 public:
  PendingUpdateSideEffects(const RoomContext& context, SideEffectFields& fields) : c_(context), fields_(fields) {}

  // Null where this process patches none; then another one is asked to.
  void setClosedAppsPatcher(ClosedAppsPatcher* patcher) { patcher_ = patcher; }

  // Counts are new. May start work of the model at once, in the middle of the flow that counted.
  void pendingUpdatesCounted();
  // The refresh behind a pass over closed applications has failed: the deferral is delivered all the same.
  void refreshFailed();
  void forgetStagedLabels();
  void forgetClosedAppsAttempt() { fields_.closedAppsAttemptedBeforeDeferral.reset(); }

  // Downloads only, for who found no closed application to patch; nothing while the gate is taken. Sets no field.
  void stageDetectedUpdates(const Labels& labels);

 private:
  // How the news of open applications is told: whether the closed ones are another process's, or wait for power.
  struct Delivery {
    bool closedAppsHandledElsewhere = false;
    bool closedAppsWaitForACPower = false;
  };

  void runPendingUpdateSideEffects();
  void stageBeforeDeferral(const LabelSet& labels);
  void stagedBeforeDeferral(const LabelSet& labels, Date since, const Status& staged);
  void continueAfterStaging(const OpenAppsSnapshot& pending);
  void startClosedAppsPass();
  void closedAppsPassEnded(ClosedAppsOutcome outcome);

  void deliverNow(std::string_view reason);
  void deliverDeferral(const OpenAppsSnapshot& pending, Delivery delivery);
  void deferForFocus(const OpenAppsSnapshot& pending, Delivery delivery);
  void deliverOpenAppsNotification(const OpenAppsSnapshot& pending, Delivery delivery);
  void stageBeforeNotification(const LabelSet& labels, Delivery delivery);
  void tell(const OpenAppsSnapshot& snapshot, Delivery delivery);
  void presentDialogForOpenApps(std::int64_t openCount);

  // `isCurrent`: no newer request was sent since, and no pass of the helper has made it void.
  using Staged = std::move_only_function<void(bool isCurrent, const Status& staged)>;
  void stage(const LabelSet& labels, Staged then);
  [[nodiscard]] bool helperPassEndedSince(Date moment) const;
  [[nodiscard]] OpenAppsSnapshot snapshot() const;
  [[nodiscard]] NewsFacts newsFacts(const OpenAppsSnapshot& snapshot) const;
  void stagingEnded();
  void setGate(OpenAppsNotificationGate gate);

  RoomContext c_;
  SideEffectFields& fields_;
  ClosedAppsPatcher* patcher_ = nullptr;
  Lifeline lifeline_;
};

}  // namespace corvane
