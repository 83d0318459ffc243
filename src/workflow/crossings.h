// What leads to what: every arrow from one room of the workflow into another. The model implements it; a room
// under test gets one that records.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/task.h"
#include "core/records/app_info.h"
#include "core/records/enumerations.h"
#include "workflow/app_facts.h"
#include "workflow/hard_deadline_decision.h"
#include "workflow/status_fields.h"

namespace corvane {

// Whether fresh counts may set off staging, patching and prompts.
enum class SideEffects { run, suppressed };

// How one run ended: whether every label is done, the helper's message, how many were installed.
using PatchCompletion = std::move_only_function<void(bool success, const std::string& message, std::int64_t installed)>;

// Main thread; every call is a plain call into the other room, within the turn.
class Crossings {
 public:
  virtual ~Crossings() = default;

  // Into the inventory. Facts are taken anew at each call.
  virtual AppFacts facts() = 0;
  virtual void replaceApps(Apps apps) = 0;  // shown at once; stored by storeApps
  virtual void recomputeCounts(SideEffects sideEffects) = 0;
  virtual void storeApps() = 0;
  virtual void storeFingerprint() = 0;
  virtual void recordDiscovery(Date when) = 0;
  virtual void recordUpdateCheck(Date when) = 0;
  virtual void refreshDeadlineDisplay() = 0;
  virtual void invalidateReceiptCaches() = 0;
  virtual void forgetDeferralEvents() = 0;

  // Into the pipeline.
  virtual void discoverInstalledApps() = 0;
  virtual void checkForUpdates(const Labels& labels) = 0;
  virtual void recheck(const Labels& labels, Task completion) = 0;  // a check whose end its caller waits for

  // Into the patch run.
  virtual void patchAll(const Labels& labels) = 0;
  virtual void patchSingle(const Label& label) = 0;

  // Into the flow of Update All.
  virtual void updateAll(DeferralPromptHost host) = 0;
  virtual void installNow() = 0;
  virtual void armEnforcement(HardPromptReason reason) = 0;  // before a hard prompt is presented

  // Into the cycle.
  virtual void patchErrorFollowUp(DiscoveryOperation operation, const Labels& labels, const std::string& message) = 0;
  virtual void updatesPutOff(DiscoveryOperation operation, const Labels& labels) = 0;  // nothing failed
  virtual void completePatchingCycle() = 0;

  // Into the watch for a prompt on screen.
  virtual void startBlockingPromptWatch(const std::string& appName) = 0;
  virtual void stopBlockingPromptWatch() = 0;
  virtual void renameBlockingPrompt(const std::string& appName) = 0;

  // Into the deferrals.
  virtual void recordDeferralEvents(const Labels& labels, DeferralEventType type, std::optional<std::int64_t> minutes,
                                    std::optional<DeferralEscalation> escalation) = 0;
  virtual void setPromptHost(DeferralPromptHost host) = 0;
  virtual void askUser(DeferralEscalation escalation) = 0;
  virtual void dismissDeferralPrompt() = 0;
  virtual bool applyAutomaticFocusDeferralIfNeeded() = 0;           // whether the dialog must stay hidden
  virtual void deadlineRead(std::optional<Date> hardDeadline) = 0;  // for display
  virtual void deadlineSettled() = 0;                               // the cycle was completed

  // Into the state of the helper. Nothing is reset by itself before the model has begun.
  virtual void refreshHelperState(bool runAutoReset) = 0;
  virtual void evaluateAutoReset() = 0;

  // Into what pending updates set off: nothing before the model has begun.
  virtual void pendingUpdatesCounted() = 0;
  virtual void refreshFailed() = 0;
  virtual void forgetStagedLabels() = 0;       // the helper completed a pass of its own
  virtual void forgetClosedAppsAttempt() = 0;  // a run was recorded

  // Some field changed: observers hear of it once, in a later turn.
  virtual void fieldsChanged() = 0;
};

}  // namespace corvane
