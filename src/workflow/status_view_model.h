// The one object that knows what the program is doing. It holds the rooms of the workflow together and
// decides nothing itself; views and schedulers call its operations and read its fields.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/lease.h"
#include "core/records/history_records.h"
#include "workflow/app_facts.h"
#include "workflow/app_predicates.h"
#include "workflow/closed_apps_patcher.h"
#include "workflow/crossings.h"
#include "workflow/deferral_prompt_app.h"
#include "workflow/discovery_pipeline.h"
#include "workflow/open_apps_snapshot.h"
#include "workflow/status_fields.h"
#include "workflow/workflow_services.h"

namespace corvane {

// Main thread only. One instance for the life of the process. Every operation answers at once; what takes time
// shows in the fields.
class StatusViewModel {
 public:
  // Loads the stored inventory, dates and deadline and counts them. Writes nothing, asks nobody, and sets off
  // nothing: the counts of stored applications start no work before begin().
  explicit StatusViewModel(const WorkflowServices& services);
  ~StatusViewModel();

  // From here on the model sees to the helper: its state, the wait for a late one, and a new binding of one whose
  // binary has changed since it was registered. So it comes before the launch registers what it finds.
  void keepHelper();

  // From here on the model acts: the badge and what the loaded counts set off, then the broadcasts; before these it
  // keeps the helper, if it did not yet. Call it once, after this process has claimed the instance, with the
  // deadline display refreshed: in a complete cycle nothing is set off. A model that never begins does what it is
  // asked, and nothing by itself: counts set nothing off, and the helper is reset by request alone.
  void begin();

  // Who patches closed applications before the user hears of the open ones; null where this process does not. It is
  // taken away before it dies.
  void setClosedAppsPatcher(ClosedAppsPatcher* patcher);

  [[nodiscard]] const StatusFields& fields() const;

  // Called in a later turn after fields changed, once however many they were.
  [[nodiscard]] Lease observe(std::function<void()> changed);

  // What the predicates of app_predicates.h are asked with; taken anew from the stores at each call. Take
  // it once for a list of rows.
  [[nodiscard]] AppFacts facts() const;

  // Derived from the fields and fresh facts.
  [[nodiscard]] Apps filteredApps() const;
  [[nodiscard]] std::string statusLine() const;
  [[nodiscard]] std::string_view statusSymbolName() const;
  [[nodiscard]] std::int64_t uncheckedAppCount() const;
  [[nodiscard]] std::int64_t updateCheckFailedCount() const;
  [[nodiscard]] Labels actionableUpdateLabels() const;
  [[nodiscard]] Labels promptableUpdateLabels() const;
  [[nodiscard]] std::optional<std::string> computeCycleCompletionMessage() const;
  // What the armed moment stands for; absent while nothing is armed ahead.
  [[nodiscard]] std::optional<PendingWatchpoint> pendingWatchpoint() const;
  // The line under the status while something is armed, with the remaining time as the caller has worded it.
  [[nodiscard]] std::optional<std::string> watchpointCountdownText(std::string_view remaining) const;
  // What the prompt says and offers at this moment. The applications are a walk of the process table away.
  [[nodiscard]] std::vector<std::int64_t> availableDeferralOptions() const;  // minutes; may be empty
  [[nodiscard]] std::int64_t promptCountdownSeconds() const;
  [[nodiscard]] std::optional<std::string> hardDeadlineExplanation() const;
  [[nodiscard]] std::optional<std::string> deferralsRemainingSummary() const;
  [[nodiscard]] std::vector<DeferralPromptApp> deferralPromptApps() const;
  [[nodiscard]] OpenAppsSnapshot openAppsSnapshot() const;
  // Neither flag is set and no run of this process is unanswered.
  [[nodiscard]] bool isIdle() const;

  // The newest first, at most `limit`; read once a label and kept until a run or a helper pass ends.
  [[nodiscard]] std::vector<PatchingReceipt> receipts(const Label& label, std::size_t limit);
  [[nodiscard]] std::vector<DeferralEventRecord> deferralEvents(const Label& label, std::size_t limit);

  void setFilterMode(FilterMode mode);
  void setSelectedDeferralMinutes(std::int64_t minutes);
  void setStatusMessage(std::optional<std::string> text);  // the transient line, for who acts on the model's behalf

  // Inventory.
  void recomputeCounts();
  void updateDockBadge();
  void refreshDeadlineDisplay();
  void invalidateReceiptCaches();
  void applyIgnoredLabelsToApps();
  void scheduleIdleWork();
  void queueIdleWork(Task work);
  void helperPassEnded();

  // The first load, right after begin(): deadline and helper; where nothing was ever discovered, a discovery.
  void loadStatus();

  // Discovery and checks. Only the force re-checks test the gate; callers of the others have.
  void discoverInstalledApps();
  void checkForUpdates();
  void checkForUpdates(const Labels& labels);
  void forceRecheck(const Label& label);
  void forceRecheckAllAlerts();
  void applyScheduledDiscoveryInventory();
  void startDiscovery(DiscoveryRequest request);

  // Patching. Only startPatching does not test the gate: its callers have.
  void updateApp(const AppInfo& app);
  void startPatching(const Labels& labels, DiscoveryOperation operation, const Labels& alsoStageLabels,
                     PatchCompletion completion);
  void startBackgroundPatch(const Labels& labels, const Labels& alsoStageLabels, PatchCompletion completion);
  // Downloads alone, while nothing else is under way.
  void stageDetectedUpdates(const Labels& labels);
  void completePatchingCycle();
  void recordSuccessfulPatchRun(Date completedAt);
  bool completeSatisfiedDeferralCycleIfNeeded();

  // Update All: what a request means is decided after a check of what is pending.
  void updateAll(DeferralPromptHost host);
  void updateAllFromMenuBar();
  void installNow();

  // Deferrals. `deferUpdates` is refused once the hard deadline has passed or no length is left before it: the forced
  // install is armed, and the prompt comes back in its hard form.
  void presentDeferralPrompt();
  void dismissDeferralPrompt();
  // At normal and focus: the prompt goes, nothing is recorded. At hard: only where the settings allow a close.
  void closeDeferralPrompt();
  void deferUpdates(bool fromDialogTimeout);
  void dialogTimeoutElapsed();
  bool applyAutomaticFocusDeferralIfNeeded();
  void userClosedHardDeadlineDialog();
  void recordDeferralEvents(const Labels& labels, DeferralEventType type, std::optional<std::int64_t> minutes,
                            std::optional<DeferralEscalation> escalation);

  // Helper.
  void refreshHelperState(bool runAutoReset);
  void markFirstRunSetupIfComplete();
  void completeFirstRunSetup();
  void registerHelper();
  void resetHelper(bool isAutomatic);

  // An update of this program itself.
  void setSelfUpdateAvailable(std::optional<SelfUpdateAvailability> available);
  void startSelfUpdate(const Label& label);

 private:
  struct Rooms;
  std::unique_ptr<Rooms> rooms_;
};

}  // namespace corvane
