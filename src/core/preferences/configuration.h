// The snapshot of every setting. Code loads a fresh one whenever it decides something.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/plist.h"
#include "core/preferences/settings_table.h"
#include "core/records/app_info.h"
#include "core/records/enumerations.h"

namespace corvane {

// How each kind of notification is presented. Unless a profile says otherwise all are banners, but the
// reminder of a hard deadline, which stays on screen.
struct CRVNotificationPolicy {
  std::array<CRVNotificationPresentation, CaseNames<CRVNotificationType>::all.size()> presentations =
      defaultPresentations();

  [[nodiscard]] CRVNotificationPresentation presentationFor(CRVNotificationType type) const {
    return presentations[static_cast<std::size_t>(type)];
  }
  friend bool operator==(const CRVNotificationPolicy&, const CRVNotificationPolicy&) = default;

 private:
  static constexpr decltype(presentations) defaultPresentations() {
    decltype(presentations) all{};  // banner is the first case
    all[static_cast<std::size_t>(CRVNotificationType::hardDeadlineReminder)] = CRVNotificationPresentation::persistent;
    return all;
  }
};

// A value; a default one holds the defaults of the settings table. Field and key bear the same name; the
// meaning, range and writers of each stand in the table.
struct CorvaneConfiguration {
  InstallomatorVersion installomatorVersion = defaultCase<InstallomatorVersion>("InstallomatorVersion");
  std::string installomatorOptions{defaultText("InstallomatorOptions")};
  bool installomatorAssembleFromFragments = defaultFlag("InstallomatorAssembleFromFragments");
  std::string installomatorCustomPath{defaultText("InstallomatorCustomPath")};
  bool githubAPIAuthEnabled = defaultFlag("GitHubAPIAuthEnabled");
  std::string githubAPIToken;

  std::vector<std::string> ignoredLabels;
  std::vector<std::string> requiredLabels;
  std::vector<std::string> optionalLabels;
  bool ignoreExternalDrives = defaultFlag("IgnoreExternalDrives");
  std::vector<std::string> ignoreFilePaths;
  bool discoverSelfUpdateLabel = defaultFlag("DiscoverSelfUpdateLabel");
  DiscoveryFrequency discoveryFrequency = defaultCase<DiscoveryFrequency>("DiscoveryFrequency");

  std::int64_t deferralTimerDefault = defaultInteger("DeferralTimerDefault");          // minutes
  std::vector<std::int64_t> deferralTimerMenu = defaultIntegers("DeferralTimerMenu");  // minutes
  std::int64_t deferralTimerFocus = defaultInteger("DeferralTimerFocus");              // minutes
  std::int64_t deferralTimerError = defaultInteger("DeferralTimerError");              // minutes
  bool focusDeferralNotificationsEnabled = defaultFlag("FocusDeferralNotificationsEnabled");
  std::string ignoreDNDApps;  // process names, separated by commas
  std::optional<std::int64_t> deadlineCountFocus;
  std::optional<std::int64_t> deadlineCountHard;
  std::optional<std::int64_t> deadlineDaysFocus;
  std::optional<std::int64_t> deadlineDaysHard;
  std::int64_t dialogTimeoutDeferral = defaultInteger("DialogTimeoutDeferral");  // seconds
  DeferralAction dialogTimeoutDeferralAction = defaultCase<DeferralAction>("DialogTimeoutDeferralAction");
  bool hardDeadlineDialogAllowClose = defaultFlag("HardDeadlineDialogAllowClose");
  bool aggressivePatchDayDeferral = defaultFlag("AggressivePatchDayDeferral");
  std::optional<std::string> patchingEndTime;                            // "HH:mm"
  std::int64_t patchWeekStartDay = defaultInteger("PatchWeekStartDay");  // 1 Sunday to 7 Saturday
  std::int64_t daysUntilReset = defaultInteger("DaysUntilReset");
  bool monthlyPatchingCadenceEnabled = defaultFlag("MonthlyPatchingCadenceEnabled");
  OrdinalValue monthlyPatchingCadenceOrdinalValue = defaultCase<OrdinalValue>("MonthlyPatchingCadenceOrdinalValue");
  WeekdayIndex monthlyPatchingCadenceWeekdayIndex = defaultCase<WeekdayIndex>("MonthlyPatchingCadenceWeekdayIndex");
  std::optional<std::string> businessHoursStartTime;  // "HH:mm"
  std::optional<std::string> businessHoursEndTime;    // "HH:mm"

  bool backgroundPatchClosedAppsEnabled = defaultFlag("BackgroundPatchClosedAppsEnabled");
  std::int64_t backgroundPatchClosedAppsIntervalHours = defaultInteger("BackgroundPatchClosedAppsIntervalHours");
  bool backgroundPatchClosedAppsRequireOnAC = defaultFlag("BackgroundPatchClosedAppsRequireOnAC");
  bool backgroundPatchAtLogin = defaultFlag("BackgroundPatchAtLogin");
  std::vector<std::string> backgroundPatchClosedAppsAllowList;
  std::vector<std::string> backgroundPatchClosedAppsBlockList;
  bool backgroundPatchClosedAppsNotifyOnCompletion = defaultFlag("BackgroundPatchClosedAppsNotifyOnCompletion");
  BackgroundPatchSchedulerMode backgroundPatchClosedAppsScheduler =
      defaultCase<BackgroundPatchSchedulerMode>("BackgroundPatchClosedAppsScheduler");
  std::int64_t backgroundPatchStartupJitterMaxMinutes = defaultInteger("BackgroundPatchStartupJitterMaxMinutes");
  bool updatesAvailableNotificationsEnabled = defaultFlag("UpdatesAvailableNotificationsEnabled");
  bool workflowStageUpdates = defaultFlag("WorkflowStageUpdates");
  bool workflowUpdateAllErrorCompletesPatching = defaultFlag("WorkflowUpdateAllErrorCompletesPatching");
  bool selfUpdateEnabled = defaultFlag("SelfUpdateEnabled");
  Label selfUpdateLabel{std::string(defaultText("SelfUpdateLabel"))};
  std::string selfUpdateReleaseListURL{defaultText("SelfUpdateReleaseListURL")};
  SelfUpdateFrequency selfUpdateFrequency = defaultCase<SelfUpdateFrequency>("SelfUpdateFrequency");
  bool autoResetHelperOnLaunch = defaultFlag("AutoResetHelperOnLaunch");

  VersionComparisonMethod versionComparisonMethod = defaultCase<VersionComparisonMethod>("VersionComparisonMethod");
  bool versionComparisonInstallomatorFallback = defaultFlag("VersionComparisonInstallomatorFallback");
  WebhookFeature webhookFeature = defaultCase<WebhookFeature>("WebhookFeature");
  std::optional<std::string> webhookURLSlack;
  std::optional<std::string> webhookURLTeams;
  bool telemetryEnabled = defaultFlag("TelemetryEnabled");
  std::string telemetryEndpoint{defaultText("TelemetryEndpoint")};
  std::string networkProbeURL{defaultText("NetworkProbeURL")};
  bool verboseMode = defaultFlag("VerboseMode");
  bool debugMode = defaultFlag("DebugMode");
  bool adminTestModeEnabled = defaultFlag("AdminTestModeEnabled");
  CRVNotificationPolicy notificationPolicy;
  std::string appTitle{defaultText("AppTitle")};  // never empty
  std::string supportTeamName;
  std::string supportTeamPhone;
  std::string supportTeamEmail;
  std::string supportTeamWebsite;

  // `ignoreFilePaths` trimmed, without empty ones (a substring of every path) and repetitions.
  [[nodiscard]] std::vector<std::string> sanitizedIgnoreFilePaths() const;

  friend bool operator==(const CorvaneConfiguration&, const CorvaneConfiguration&) = default;
};

// The field of a key of the settings table, in its canonical form; no value for a limit that is off, a text that is
// absent, and a key without a field.
[[nodiscard]] PlistValue fieldValue(const CorvaneConfiguration& config, std::string_view key);
// The reverse. A value of another type, and a key without a field, change nothing.
void setField(CorvaneConfiguration& config, std::string_view key, const PlistValue& value);
// What the settings window stores for the field; absent: it removes what is stored.
[[nodiscard]] std::optional<PlistValue> savedValue(const CorvaneConfiguration& config, const Setting& setting);

// The configuration of one moment; it stays as it is when another one comes into force. A copy costs nothing.
class SharedConfiguration {
 public:
  explicit SharedConfiguration(std::shared_ptr<const CorvaneConfiguration> held) : held_(std::move(held)) {}
  [[nodiscard]] const CorvaneConfiguration& operator*() const { return *held_; }
  [[nodiscard]] const CorvaneConfiguration* operator->() const { return held_.get(); }
  // For calls that take a configuration; none of them keeps the reference.
  operator const CorvaneConfiguration&() const { return *held_; }

 private:
  std::shared_ptr<const CorvaneConfiguration> held_;  // never null
};

}  // namespace corvane
