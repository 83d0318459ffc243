// All that views may read of the workflow, as plain values. Each slice is written by the one room named
// beside it; everybody else sees it const. Nothing is decided here.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <variant>

#include "base/date.h"
#include "core/records/app_info.h"
#include "core/records/enumerations.h"
#include "core/records/helper_records.h"

namespace corvane {

enum class FilterMode { all, needsUpdate, alerts, upToDate };
enum class DiscoveryOperation { initialLoad, discoverInstalled, checkUpdates, patchAll, patchSingle, patchBackground };
// Where the sequence "closed applications first, then tell of the open ones" stands.
enum class OpenAppsNotificationGate { idle, patchingClosedApps, refreshThenNotify };
// Which surface shows the deferral prompt.
enum class DeferralPromptHost { dashboard, settings, standalone };

template <>
struct CaseNames<FilterMode> {
  static constexpr auto all = std::to_array<CaseName<FilterMode>>({{FilterMode::all, "all", "All"},
                                                                   {FilterMode::needsUpdate, "needsUpdate", ""},
                                                                   {FilterMode::alerts, "alerts", ""},
                                                                   {FilterMode::upToDate, "upToDate", ""}});
};
template <>
struct CaseNames<DiscoveryOperation> {
  static constexpr auto all =
      std::to_array<CaseName<DiscoveryOperation>>({{DiscoveryOperation::initialLoad, "initialLoad", ""},
                                                   {DiscoveryOperation::discoverInstalled, "discoverInstalled", ""},
                                                   {DiscoveryOperation::checkUpdates, "checkUpdates", ""},
                                                   {DiscoveryOperation::patchAll, "patchAll", ""},
                                                   {DiscoveryOperation::patchSingle, "patchSingle", ""},
                                                   {DiscoveryOperation::patchBackground, "patchBackground", ""}});
};
template <>
struct CaseNames<OpenAppsNotificationGate> {
  static constexpr auto all = std::to_array<CaseName<OpenAppsNotificationGate>>(
      {{OpenAppsNotificationGate::idle, "idle", ""},
       {OpenAppsNotificationGate::patchingClosedApps, "patchingClosedApps", ""},
       {OpenAppsNotificationGate::refreshThenNotify, "refreshThenNotify", ""}});
};
template <>
struct CaseNames<DeferralPromptHost> {
  static constexpr auto all =
      std::to_array<CaseName<DeferralPromptHost>>({{DeferralPromptHost::dashboard, "dashboard", ""},
                                                   {DeferralPromptHost::settings, "settings", ""},
                                                   {DeferralPromptHost::standalone, "standalone", ""}});
};

// What the armed moment of the workflow stands for.
namespace watchpoint {
struct Enforcement {  // the forced install is armed
  Date at;
  friend bool operator==(const Enforcement&, const Enforcement&) = default;
};
struct DeferralReminder {  // a user deferral runs
  Date at;
  friend bool operator==(const DeferralReminder&, const DeferralReminder&) = default;
};
struct FocusDeferral {  // an automatic focus deferral runs
  Date at;
  friend bool operator==(const FocusDeferral&, const FocusDeferral&) = default;
};
}  // namespace watchpoint
using PendingWatchpoint =
    std::variant<watchpoint::Enforcement, watchpoint::DeferralReminder, watchpoint::FocusDeferral>;

// Written by OperationGate. The gate is idle when both flags are false.
struct GateFields {
  bool isPatching = false;
  bool isLoading = false;
  std::optional<DiscoveryOperation> currentOperation;  // what the busy state is for; not the gate
  bool helperPassOwnsPatchingState = false;            // isPatching shows a pass of the helper, no run of ours
};

// Written by UserMessages: the transient line under the status, and the last thing that went wrong.
struct MessageFields {
  std::optional<std::string> statusMessage;
  std::optional<std::string> errorMessage;
};

// Written by Inventory.
struct InventoryFields {
  Apps apps;
  std::int64_t pendingUpdates = 0;
  std::int64_t updatesAwaitingNextCycle = 0;
  std::int64_t upToDateCount = 0;
  std::int64_t alertCount = 0;
  std::optional<Date> lastDiscoveryDate;
  std::optional<Date> lastUpdateCheckDate;
  std::optional<std::string> cycleCompletionMessage;
};

// Written by DiscoveryPipeline.
struct DiscoveryFields {
  std::int64_t discoveryGeneration = 0;   // an answer counts only when it carries the current value
  bool updateCheckCoversAllApps = false;  // a check over everything runs: counts show "—" while it does
  Labels answeredLabels;                  // whose latest versions the last check answered for
};

// How far a run has come, for the status line's wording and the row's own. `done` counts finished labels.
struct PatchProgress {
  DiscoveryOperation operation = DiscoveryOperation::patchAll;
  Labels labels;
  std::optional<Label> currentLabel;  // known once the run tells it; the first of `labels` before
  std::int64_t done = 0;
  std::int64_t total = 0;
  friend bool operator==(const PatchProgress&, const PatchProgress&) = default;
};

// How a run ended, in the helper's words; a run that could not be started ended without success.
struct PatchEnd {
  Labels labels;
  bool success = false;
  std::string message;
  std::int64_t installedCount = 0;
  friend bool operator==(const PatchEnd&, const PatchEnd&) = default;
};

// Written by PatchRun.
struct PatchFields {
  std::optional<PatchProgress> progress;  // of a run of this process; absent when none is out
  std::optional<PatchEnd> lastEnd;        // of the last run of this process that is not out any more
};

// Written by BlockingPromptWatch.
struct BlockingPromptFields {
  std::optional<std::string> blockingPromptAppName;  // whose prompt to quit is on screen
};

// Written by DeferralActions.
struct DeferralFields {
  bool showDeferralPrompt = false;
  std::int64_t deferralPromptGeneration = 0;  // names one presentation of the prompt
  DeferralPromptHost deferralPromptHost = DeferralPromptHost::dashboard;
  std::int64_t selectedDeferralMinutes = 60;
  std::optional<Date> currentHardDeadlineDate;
  DeferralEscalation currentDeferralEscalation = DeferralEscalation::normal;
  bool focusRecheckSuppressedDialog = false;
};

// Written by UpdateAllFlow.
struct UpdateAllFields {
  Labels pendingPatchLabels;  // what the last decision was about: the open prompt, or the install that was asked for
  bool installNowQueued = false;
  bool userRecheckInFlight = false;
};

// Written by HelperLifecycle.
struct HelperFields {
  bool helperOperational = false;
  bool installomatorAvailable = false;
  bool sawInstallomatorMissing = false;
  bool firstRunSetupCompleted = false;
  bool isManagedByMDM = false;
  bool didAttemptAutoReset = false;
  bool didLogAutoResetSkip = false;
  std::optional<Date> postLoginHelperGraceDeadline;
};

// Written by SelfUpdateStart.
struct SelfUpdateFields {
  std::optional<SelfUpdateAvailability> selfUpdateAvailable;
  bool selfUpdateQueued = false;
};

// Written by PendingUpdateSideEffects.
struct SideEffectFields {
  OpenAppsNotificationGate openAppsNotificationGate = OpenAppsNotificationGate::idle;
  std::int64_t openAppsNotificationGeneration = 0;
  std::int64_t openAppsNotifyStageGeneration = 0;
  std::optional<LabelSet> openAppsNotifyStageLabels;  // staging is in flight while set
  std::optional<LabelSet> labelsStagedBeforeDeferral;
  std::optional<LabelSet> closedAppsAttemptedBeforeDeferral;
};

struct StatusFields {
  FilterMode filterMode = FilterMode::all;  // the dashboard's picker, through the model
  GateFields gate;
  MessageFields messages;
  InventoryFields inventory;
  DiscoveryFields discovery;
  PatchFields patch;
  BlockingPromptFields blockingPrompt;
  DeferralFields deferral;
  UpdateAllFields updateAll;
  HelperFields helper;
  SelfUpdateFields selfUpdate;
  SideEffectFields sideEffects;
};

}  // namespace corvane
