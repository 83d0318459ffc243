#include "workflow/status_view_model.h"

#include <fmt/format.h>

#include "base/localized.h"
#include "base/observers.h"
#include "core/records/notifications.h"
#include "workflow/blocking_prompt_watch.h"
#include "workflow/deferral_actions.h"
#include "workflow/deferral_texts.h"
#include "workflow/helper_lifecycle.h"
#include "workflow/helper_pass_mirror.h"
#include "workflow/inventory.h"
#include "workflow/patch_cycle.h"
#include "workflow/patch_run.h"
#include "workflow/pending_update_side_effects.h"
#include "workflow/self_update_start.h"
#include "workflow/status_texts.h"
#include "workflow/update_all_flow.h"
#include "workflow/watchpoint.h"

namespace corvane {

// The rooms, and the arrows between them.
struct StatusViewModel::Rooms final : Crossings {
  explicit Rooms(const WorkflowServices& given) : services(given) {}

  AppFacts facts() override { return inventory.facts(); }
  void replaceApps(Apps apps) override { inventory.replaceApps(std::move(apps)); }
  void recomputeCounts(SideEffects sideEffects) override { inventory.recomputeCounts(sideEffects); }
  void storeApps() override { inventory.storeApps(); }
  void storeFingerprint() override { inventory.storeFingerprint(); }
  void recordDiscovery(Date when) override { inventory.recordDiscovery(when); }
  void recordUpdateCheck(Date when) override { inventory.recordUpdateCheck(when); }
  void refreshDeadlineDisplay() override { inventory.refreshDeadlineDisplay(); }
  void invalidateReceiptCaches() override { inventory.invalidateReceiptCaches(); }
  void forgetDeferralEvents() override { inventory.forgetDeferralEvents(); }

  void discoverInstalledApps() override { pipeline.discoverInstalledApps(); }
  void checkForUpdates(const Labels& labels) override { pipeline.checkForUpdates(labels); }
  void recheck(const Labels& labels, Task completion) override {
    pipeline.startDiscovery({.includeLatestVersions = true,
                             .operation = DiscoveryOperation::checkUpdates,
                             .labelsFilter = labels,
                             .forceFullDiscovery = false,
                             .completion = std::move(completion)});
  }

  void patchAll(const Labels& labels) override { run.startPatching(labels, DiscoveryOperation::patchAll, {}, {}); }
  void patchSingle(const Label& label) override { run.startPatching({label}, DiscoveryOperation::patchSingle, {}, {}); }

  void updateAll(DeferralPromptHost host) override { updateAllFlow.updateAll(host); }
  void installNow() override { updateAllFlow.installNow(); }
  void armEnforcement(HardPromptReason reason) override { updateAllFlow.armEnforcement(reason); }

  void updatesPutOff(DiscoveryOperation operation, const Labels& labels) override {
    cycle.updatesPutOff(operation, labels);
  }
  void patchErrorFollowUp(DiscoveryOperation operation, const Labels& labels, const std::string& message) override {
    cycle.applyPatchErrorFollowUp(operation, labels, message);
  }
  void completePatchingCycle() override { cycle.completePatchingCycle(); }

  void startBlockingPromptWatch(const std::string& appName) override { watch.startBlockingPromptWatch(appName); }
  void stopBlockingPromptWatch() override { watch.stopBlockingPromptWatch(); }
  void renameBlockingPrompt(const std::string& appName) override { watch.rename(appName); }

  void recordDeferralEvents(const Labels& labels, DeferralEventType type, std::optional<std::int64_t> minutes,
                            std::optional<DeferralEscalation> escalation) override {
    deferrals.recordDeferralEvents(labels, type, minutes, escalation);
  }
  void setPromptHost(DeferralPromptHost host) override { deferrals.setPromptHost(host); }
  void askUser(DeferralEscalation escalation) override { deferrals.ask(escalation); }
  void dismissDeferralPrompt() override { deferrals.dismissDeferralPrompt(); }
  bool applyAutomaticFocusDeferralIfNeeded() override { return deferrals.applyAutomaticFocusDeferralIfNeeded(); }
  void deadlineRead(std::optional<Date> hardDeadline) override { deferrals.setHardDeadlineDate(hardDeadline); }
  void deadlineSettled() override { deferrals.settleDeadline(); }

  void refreshHelperState(bool runAutoReset) override { lifecycle.refreshHelperState(runAutoReset); }
  void evaluateAutoReset() override {
    if (keepsHelper) lifecycle.evaluateAutoReset();
  }

  void pendingUpdatesCounted() override {
    if (begun) sideEffects.pendingUpdatesCounted();
  }
  void refreshFailed() override { sideEffects.refreshFailed(); }
  void forgetStagedLabels() override { sideEffects.forgetStagedLabels(); }
  void forgetClosedAppsAttempt() override { sideEffects.forgetClosedAppsAttempt(); }

  void fieldsChanged() override {
    if (changeTold) return;
    changeTold = true;
    services.main.post(lifeline.guard([this] { tellObservers(); }));
  }

  void tellObservers() {
    changeTold = false;
    observers.tell();
  }

  void subscribe();

  template <class N, class F>
  void on(F handler) {
    subscriptions.push_back(services.notifications.observe<N>(std::move(handler)));
  }

  WorkflowServices services;
  StatusFields fields;
  Logger log{services.log, "StatusViewModel"};
  bool keepsHelper = false;
  bool begun = false;
  bool changeTold = false;
  Observers observers;

  std::function<void()> changed = [this] { fieldsChanged(); };
  OperationGate gate{services.main, fields.gate, changed};
  UserMessages messages{fields.messages, changed};
  RoomContext context{services, fields, gate, messages, *this, log};
  Inventory inventory{context, fields.inventory};
  DiscoveryPipeline pipeline{context, fields.discovery};
  PatchRun run{context, fields.patch};
  PatchCycle cycle{context};
  BlockingPromptWatch watch{context, fields.blockingPrompt};
  HelperPassMirror mirror{context};
  HelperLifecycle lifecycle{context, fields.helper};
  DeferralActions deferrals{context, fields.deferral};
  UpdateAllFlow updateAllFlow{context, fields.updateAll};
  PendingUpdateSideEffects sideEffects{context, fields.sideEffects};
  SelfUpdateStart selfUpdate{context, fields.selfUpdate};
  std::vector<Lease> subscriptions;
  Lifeline lifeline;
};

void StatusViewModel::Rooms::subscribe() {
  on<CorvaneDidBecomeActive>([this](const auto&) { inventory.updateDockBadge(); });
  on<CorvaneScheduledDiscoveryCompleted>([this](const CorvaneScheduledDiscoveryCompleted& discovery) {
    log.info(fmt::format("Received .corvaneScheduledDiscoveryCompleted (runID {}); applying inventory-only refresh.",
                         discovery.runID.empty() ? "<unknown>" : discovery.runID));
    pipeline.applyScheduledDiscoveryInventory();
  });
  on<CorvaneHelperPassCompleted>([this](const CorvaneHelperPassCompleted& pass) { mirror.completed(pass); });
  on<CorvaneHelperPassEnded>([this](const auto&) { mirror.ended(); });
  on<CorvaneHelperPassStarted>([this](const CorvaneHelperPassStarted& pass) { mirror.started(pass); });
  on<CorvaneHelperPassProgress>([this](const CorvaneHelperPassProgress& pass) { mirror.progressed(pass); });
  on<ShowDeferralPromptFromNotification>([this](const auto&) {
    log.info("Received notification deep-link — invoking updateAll() to surface the deferral prompt.");
    updateAllFlow.updateAll(DeferralPromptHost::standalone);
  });
  on<CorvaneSettingsDidChange>([this](const auto&) {
    inventory.refreshDeadlineDisplay();
    inventory.applyIgnoredLabelsToApps();
  });
}

StatusViewModel::StatusViewModel(const WorkflowServices& services) : rooms_(std::make_unique<Rooms>(services)) {
  rooms_->lifecycle.load();
  rooms_->deferrals.load();
  rooms_->inventory.load();
}

StatusViewModel::~StatusViewModel() = default;

void StatusViewModel::keepHelper() {
  if (std::exchange(rooms_->keepsHelper, true)) return;
  rooms_->lifecycle.refreshHelperState(false);
  rooms_->lifecycle.reconcileHelperAfterLogin();
}

void StatusViewModel::begin() {
  keepHelper();
  rooms_->begun = true;
  if (!rooms_->fields.inventory.apps.empty()) rooms_->inventory.recomputeCounts(SideEffects::run);
  rooms_->subscribe();
}

void StatusViewModel::setClosedAppsPatcher(ClosedAppsPatcher* patcher) {
  rooms_->sideEffects.setClosedAppsPatcher(patcher);
}

const StatusFields& StatusViewModel::fields() const { return rooms_->fields; }

Lease StatusViewModel::observe(std::function<void()> changed) { return rooms_->observers.add(std::move(changed)); }

AppFacts StatusViewModel::facts() const { return rooms_->inventory.facts(); }

Apps StatusViewModel::filteredApps() const {
  return corvane::filteredApps(fields().inventory.apps, fields().filterMode, facts(), rooms_->services.locale);
}

std::string StatusViewModel::statusLine() const { return corvane::statusLine(fields(), rooms_->services.clock.now()); }

std::string_view StatusViewModel::statusSymbolName() const {
  return corvane::statusSymbolName(fields(), rooms_->services.clock.now());
}

std::int64_t StatusViewModel::uncheckedAppCount() const { return corvane::uncheckedAppCount(fields().inventory.apps); }

std::int64_t StatusViewModel::updateCheckFailedCount() const {
  return corvane::updateCheckFailedCount(fields().inventory.apps, facts());
}

Labels StatusViewModel::actionableUpdateLabels() const {
  return corvane::actionableUpdateLabels(fields().inventory.apps, facts());
}

Labels StatusViewModel::promptableUpdateLabels() const {
  return corvane::promptableUpdateLabels(fields().inventory, facts());
}

std::optional<std::string> StatusViewModel::computeCycleCompletionMessage() const {
  return rooms_->inventory.computeCycleCompletionMessage();
}

std::optional<PendingWatchpoint> StatusViewModel::pendingWatchpoint() const {
  const auto& store = rooms_->services.preferences;
  return corvane::pendingWatchpoint(fields().deferral, store.readNextAutoLaunch(),
                                    store.readAutomaticFocusDeferralArmed(), rooms_->services.clock.now());
}

std::optional<std::string> StatusViewModel::watchpointCountdownText(std::string_view remaining) const {
  const auto armed = pendingWatchpoint();
  if (!armed) return std::nullopt;
  return watchpointText(*armed, remaining,
                        rooms_->services.preferences.loadConfiguration()->focusDeferralNotificationsEnabled);
}

std::vector<std::int64_t> StatusViewModel::availableDeferralOptions() const {
  return rooms_->deferrals.availableDeferralOptions();
}
std::int64_t StatusViewModel::promptCountdownSeconds() const { return rooms_->deferrals.promptCountdownSeconds(); }
std::optional<std::string> StatusViewModel::hardDeadlineExplanation() const {
  return rooms_->deferrals.hardDeadlineExplanation();
}
std::optional<std::string> StatusViewModel::deferralsRemainingSummary() const {
  return rooms_->deferrals.deferralsRemainingSummary();
}
std::vector<DeferralPromptApp> StatusViewModel::deferralPromptApps() const {
  return rooms_->deferrals.deferralPromptApps();
}
OpenAppsSnapshot StatusViewModel::openAppsSnapshot() const {
  return corvane::openAppsSnapshot(fields().inventory, facts(), rooms_->services, rooms_->log);
}

bool StatusViewModel::isIdle() const { return !rooms_->gate.busy(); }

std::vector<PatchingReceipt> StatusViewModel::receipts(const Label& label, std::size_t limit) {
  return rooms_->inventory.receipts(label, limit);
}

std::vector<DeferralEventRecord> StatusViewModel::deferralEvents(const Label& label, std::size_t limit) {
  return rooms_->inventory.deferralEvents(label, limit);
}

void StatusViewModel::setFilterMode(FilterMode mode) {
  rooms_->fields.filterMode = mode;
  rooms_->fieldsChanged();
}

void StatusViewModel::setSelectedDeferralMinutes(std::int64_t minutes) {
  rooms_->deferrals.setSelectedDeferralMinutes(minutes);
}

void StatusViewModel::setStatusMessage(std::optional<std::string> text) { rooms_->messages.status(std::move(text)); }

void StatusViewModel::recomputeCounts() { rooms_->inventory.recomputeCounts(SideEffects::run); }
void StatusViewModel::updateDockBadge() { rooms_->inventory.updateDockBadge(); }
void StatusViewModel::refreshDeadlineDisplay() { rooms_->inventory.refreshDeadlineDisplay(); }
void StatusViewModel::invalidateReceiptCaches() { rooms_->inventory.invalidateReceiptCaches(); }
void StatusViewModel::applyIgnoredLabelsToApps() { rooms_->inventory.applyIgnoredLabelsToApps(); }
void StatusViewModel::scheduleIdleWork() { rooms_->gate.scheduleIdleWork(); }
void StatusViewModel::queueIdleWork(Task work) { rooms_->gate.whenIdle(std::move(work)); }
void StatusViewModel::helperPassEnded() { rooms_->mirror.ended(); }

void StatusViewModel::loadStatus() { rooms_->pipeline.loadStatus(); }
void StatusViewModel::discoverInstalledApps() { rooms_->pipeline.discoverInstalledApps(); }
void StatusViewModel::checkForUpdates() { rooms_->pipeline.checkForUpdates(); }
void StatusViewModel::checkForUpdates(const Labels& labels) { rooms_->pipeline.checkForUpdates(labels); }
void StatusViewModel::forceRecheck(const Label& label) { rooms_->pipeline.forceRecheck(label); }
void StatusViewModel::forceRecheckAllAlerts() { rooms_->pipeline.forceRecheckAllAlerts(); }
void StatusViewModel::applyScheduledDiscoveryInventory() { rooms_->pipeline.applyScheduledDiscoveryInventory(); }
void StatusViewModel::startDiscovery(DiscoveryRequest request) { rooms_->pipeline.startDiscovery(std::move(request)); }

void StatusViewModel::updateApp(const AppInfo& app) { rooms_->run.updateApp(app); }
void StatusViewModel::startPatching(const Labels& labels, DiscoveryOperation operation, const Labels& alsoStageLabels,
                                    PatchCompletion completion) {
  rooms_->run.startPatching(labels, operation, alsoStageLabels, std::move(completion));
}
void StatusViewModel::startBackgroundPatch(const Labels& labels, const Labels& alsoStageLabels,
                                           PatchCompletion completion) {
  rooms_->run.startBackgroundPatch(labels, alsoStageLabels, std::move(completion));
}
void StatusViewModel::stageDetectedUpdates(const Labels& labels) { rooms_->sideEffects.stageDetectedUpdates(labels); }
void StatusViewModel::completePatchingCycle() { rooms_->cycle.completePatchingCycle(); }
void StatusViewModel::recordSuccessfulPatchRun(Date completedAt) {
  rooms_->cycle.recordSuccessfulPatchRun(completedAt);
}
bool StatusViewModel::completeSatisfiedDeferralCycleIfNeeded() {
  return rooms_->cycle.completeSatisfiedDeferralCycleIfNeeded();
}

void StatusViewModel::updateAll(DeferralPromptHost host) { rooms_->updateAllFlow.updateAll(host); }
void StatusViewModel::updateAllFromMenuBar() { rooms_->updateAllFlow.updateAllFromMenuBar(); }
void StatusViewModel::installNow() { rooms_->updateAllFlow.installNow(); }

void StatusViewModel::presentDeferralPrompt() { rooms_->deferrals.presentDeferralPrompt(); }
void StatusViewModel::closeDeferralPrompt() {
  if (fields().deferral.currentDeferralEscalation == DeferralEscalation::hard)
    rooms_->deferrals.userClosedHardDeadlineDialog();
  else
    rooms_->deferrals.closeUnanswered();
}
void StatusViewModel::deferUpdates(bool fromDialogTimeout) { rooms_->deferrals.deferUpdates(fromDialogTimeout); }
void StatusViewModel::dialogTimeoutElapsed() { rooms_->deferrals.dialogTimeoutElapsed(); }
bool StatusViewModel::applyAutomaticFocusDeferralIfNeeded() {
  return rooms_->deferrals.applyAutomaticFocusDeferralIfNeeded();
}
void StatusViewModel::userClosedHardDeadlineDialog() { rooms_->deferrals.userClosedHardDeadlineDialog(); }
void StatusViewModel::dismissDeferralPrompt() { rooms_->deferrals.dismissDeferralPrompt(); }
void StatusViewModel::recordDeferralEvents(const Labels& labels, DeferralEventType type,
                                           std::optional<std::int64_t> minutes,
                                           std::optional<DeferralEscalation> escalation) {
  rooms_->deferrals.recordDeferralEvents(labels, type, minutes, escalation);
}

void StatusViewModel::refreshHelperState(bool runAutoReset) { rooms_->lifecycle.refreshHelperState(runAutoReset); }
void StatusViewModel::markFirstRunSetupIfComplete() { rooms_->lifecycle.markFirstRunSetupIfComplete(); }
void StatusViewModel::completeFirstRunSetup() { rooms_->lifecycle.completeFirstRunSetup(); }
void StatusViewModel::registerHelper() { rooms_->lifecycle.registerHelper(); }
void StatusViewModel::resetHelper(bool isAutomatic) { rooms_->lifecycle.resetHelper(isAutomatic); }

void StatusViewModel::setSelfUpdateAvailable(std::optional<SelfUpdateAvailability> available) {
  rooms_->selfUpdate.setAvailable(std::move(available));
}
void StatusViewModel::startSelfUpdate(const Label& label) { rooms_->selfUpdate.startSelfUpdate(label); }

}  // namespace corvane
