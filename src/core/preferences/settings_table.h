// Every preference key, exactly once. Loading, the managed groups, the listing of settings and
// docs/preferences.md are made from this table.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "core/preferences/setting.h"

namespace corvane {

// The waits that the prompt's menu offers, in minutes.
inline constexpr auto kDefaultDeferralMenu = std::to_array<std::int64_t>({60, 120, 240, 1440});

// Short forms for the rows.
namespace settings_rows {
using enum SettingType;
using Access = SettingAccess;
using Group = ManagedGroup;
inline constexpr std::int64_t kMinutesOfAMonth = 31 * 24 * 60;
inline constexpr std::int64_t kMostCount = 1'000'000;

// clang-format off
inline constexpr auto all = std::to_array<Setting>({
    // Installomator and the public source host
    {.key = "InstallomatorVersion", .saved = 20, .type = enumeration, .fallback = "release",
     .choices = rawNameAt<InstallomatorVersion>, .group = Group::installomator,
     .meaning = "Which Installomator is fetched and run: the latest release, the main branch, or a custom one."},
    {.key = "InstallomatorOptions", .saved = 21, .type = text, .group = Group::installomator,
     .form = TextForm::installerOptions,
     .meaning = "Options for every run of Installomator, KEY=value tokens separated by blanks; keys outside the "
                "options table count only in a profile."},
    {.key = "InstallomatorAssembleFromFragments", .saved = 23, .type = boolean, .fallback = true,
     .group = Group::installomatorAssembly,
     .meaning = "Installomator.sh is put together from the downloaded label fragments for the main and custom "
                "versions."},
    {.key = "InstallomatorCustomPath", .type = text, .access = Access::managed,
     .form = TextForm::path,
     .meaning = "Folder or script that the custom version of Installomator is taken from."},
    {.key = "GitHubAPIAuthEnabled", .saved = 22, .type = boolean, .fallback = false, .group = Group::gitHubAPI,
     .title = "GitHub API Auth Enabled",
     .meaning = "Requests to the source host's API carry the personal access token."},
    {.key = "GitHubAPIToken", .saved = 24, .emptyIsRemoved = true, .type = text, .group = Group::gitHubAPI,
     .neverLogged = true,
     .form = TextForm::token,
     .title = "GitHub API Token",
     .meaning = "Personal access token for the source host's API."},
    // Labels and discovery
    {.key = "IgnoredLabels", .saved = 1, .type = labelList, .group = Group::labels,
     .form = TextForm::labelPattern,
     .meaning = "Label patterns (* and ?) that discovery leaves out, unless they are required or optional too."},
    {.key = "AppIgnoredLabels", .saved = 2, .type = labelList, .group = Group::labels,
     .form = TextForm::labelPattern,
     .formerNameOf = "IgnoredLabels",
     .meaning = "Former name of IgnoredLabels; counts where IgnoredLabels is not set, and a save removes it."},
    {.key = "RequiredLabels", .saved = 3, .type = labelList, .group = Group::labels,
     .form = TextForm::labelPattern,
     .meaning = "Label patterns that are always included, and installed when missing."},
    {.key = "OptionalLabels", .saved = 4, .type = labelList, .group = Group::labels,
     .form = TextForm::labelPattern,
     .meaning = "Label patterns that are included when installed, even if an ignore pattern matches."},
    {.key = "IgnoreExternalDrives", .saved = 46, .type = boolean, .fallback = true, .group = Group::discoveryFilters,
     .meaning = "Applications on volumes other than the boot volume are left out."},
    {.key = "IgnoreFilePaths", .saved = 45, .emptyIsRemoved = true, .type = pathList, .group = Group::discoveryFilters,
     .form = TextForm::pathPart,
     .meaning = "Applications whose path holds one of these texts, in any case, are left out."},
    {.key = "DiscoverSelfUpdateLabel", .saved = 50, .type = boolean, .fallback = true, .group = Group::selfUpdate,
     .meaning = "Corvane itself stands in the list of applications, unless it updates itself."},
    {.key = "DiscoveryFrequency", .type = enumeration, .access = Access::managed, .fallback = "daily",
     .choices = rawNameAt<DiscoveryFrequency>,
     .meaning = "How often a full discovery runs by itself."},
    // Deferrals and cadence
    {.key = "DeferralTimerDefault", .saved = 5, .type = integer, .fallback = std::int64_t{60},
     .range = {1, kMinutesOfAMonth}, .group = Group::deferralSettings,
     .meaning = "Minutes until a deferred prompt comes back."},
    {.key = "DeferralTimerMenu", .type = integerList, .access = Access::managed,
     .fallback = std::span<const std::int64_t>(kDefaultDeferralMenu), .range = {1, kMinutesOfAMonth},
     .meaning = "Minutes that the prompt offers to defer for; with an empty list DeferralTimerDefault, 60, 120 and 240."},
    {.key = "DeferralTimerFocus", .saved = 6, .type = integer, .fallback = std::int64_t{30},
     .range = {1, kMinutesOfAMonth},
     .group = Group::deferralSettings,
     .meaning = "Minutes of an automatic deferral while the user is in Focus."},
    {.key = "DeferralTimerError", .type = integer, .access = Access::managed, .fallback = std::int64_t{60},
     .range = {1, kMinutesOfAMonth},
     .meaning = "Minutes until an Update All that had errors is tried again."},
    {.key = "FocusDeferralNotificationsEnabled", .saved = 7, .type = boolean, .fallback = false,
     .group = Group::deferralSettings,
     .meaning = "An automatic deferral in Focus is told by a notification."},
    {.key = "IgnoreDNDApps", .saved = 8, .emptyIsRemoved = true, .type = text, .group = Group::deferralSettings,
     .meaning = "Process names, separated by commas, whose display-sleep assertions do not count as Focus."},
    {.key = "DeadlineCountFocus", .saved = 9, .type = optionalInteger, .range = {0, kMostCount},
     .group = Group::deferralSettings,
     .meaning = "Automatic deferrals in Focus before the prompt shows anyway; 0 is reached at once."},
    {.key = "DeadlineCountHard", .saved = 10, .type = optionalInteger, .range = {0, kMostCount},
     .group = Group::deferralSettings,
     .meaning = "Deferrals before installation is required; 0 is reached at once."},
    {.key = "DeadlineDaysFocus", .saved = 11, .type = optionalInteger, .range = {0, 366},
     .group = Group::deferralSettings,
     .meaning = "Days from the cycle's start after which Focus no longer defers."},
    {.key = "DeadlineDaysHard", .saved = 12, .type = optionalInteger, .range = {0, 366},
     .group = Group::deferralSettings,
     .meaning = "Days from the cycle's start after which installation is required."},
    {.key = "DialogTimeoutDeferral", .type = integer, .access = Access::managed, .fallback = std::int64_t{300},
     .range = {0, 604'800},
     .meaning = "Seconds that the prompt waits for an answer; 0 counts as 1."},
    {.key = "DialogTimeoutDeferralAction", .type = enumeration, .access = Access::managed, .fallback = "defer",
     .choices = rawNameAt<DeferralAction>,
     .meaning = "What happens when nobody answers the prompt in time."},
    {.key = "HardDeadlineDialogAllowClose", .type = boolean, .access = Access::managed, .fallback = false,
     .meaning = "The prompt of a hard deadline may be closed until the enforcement is due."},
    {.key = "AggressivePatchDayDeferral", .type = boolean, .access = Access::managed, .fallback = false,
     .meaning = "On the day of a hard deadline only waits that end before PatchingEndTime are offered."},
    {.key = "PatchingEndTime", .type = timeOfDay, .access = Access::managed,
     .meaning = "Time of day, \"HH:mm\", at which patching on a deadline day is to be over."},
    {.key = "PatchWeekStartDay", .saved = 13, .type = integer, .fallback = std::int64_t{2}, .range = {1, 7},
     .group = Group::deferralSettings,
     .meaning = "Weekday on which the weekly cycle starts: 1 is Sunday, 7 is Saturday."},
    {.key = "DaysUntilReset", .saved = 14, .type = integer, .fallback = std::int64_t{7}, .range = {1, 366},
     .group = Group::deferralSettings,
     .meaning = "Length of the weekly cadence's cycle in days."},
    {.key = "MonthlyPatchingCadenceEnabled", .saved = 15, .type = boolean, .fallback = false,
     .group = Group::deferralSettings,
     .meaning = "The cycle starts on a chosen weekday of the month instead."},
    {.key = "MonthlyPatchingCadenceOrdinalValue", .saved = 16, .type = enumeration, .fallback = "second",
     .choices = rawNameAt<OrdinalValue>, .group = Group::deferralSettings,
     .meaning = "Which of the month's weekdays starts the cycle; fifth is the last one in a month with four."},
    {.key = "MonthlyPatchingCadenceWeekdayIndex", .saved = 17, .type = enumeration, .fallback = "tuesday",
     .choices = rawNameAt<WeekdayIndex>, .group = Group::deferralSettings,
     .meaning = "The weekday of the monthly cadence."},
    {.key = "MonthlyPatchingCadenceStartTime", .type = optionalText, .access = Access::managed,
     .group = Group::deferralSettings,
     .meaning = "Kept for older profiles; cycles start at midnight, but a profile that sets it manages the deferral "
                "settings."},
    {.key = "BusinessHoursStartTime", .saved = 18, .type = timeOfDay, .group = Group::businessHours,
     .meaning = "Start of the daily window, \"HH:mm\", in which open applications are not forced; both times are needed."},
    {.key = "BusinessHoursEndTime", .saved = 19, .type = timeOfDay, .group = Group::businessHours,
     .meaning = "End of that window, \"HH:mm\"; before the start it lies on the next day, and equal to it the window is empty."},
    // Background work and self-update
    {.key = "BackgroundPatchClosedAppsEnabled", .saved = 36, .type = boolean, .fallback = false,
     .group = Group::backgroundPatch,
     .meaning = "Applications that are not open are updated silently, on a schedule."},
    {.key = "BackgroundPatchClosedAppsIntervalHours", .saved = 37, .type = integer, .fallback = std::int64_t{4},
     .range = {1, 168}, .group = Group::backgroundPatch,
     .meaning = "Hours between two such passes."},
    {.key = "BackgroundPatchClosedAppsRequireOnAC", .saved = 38, .type = boolean, .fallback = false,
     .group = Group::backgroundPatch,
     .meaning = "A pass runs only on mains power."},
    {.key = "BackgroundPatchAtLogin", .saved = 39, .type = boolean, .fallback = false, .group = Group::backgroundPatch,
     .meaning = "A pass runs right after login too."},
    {.key = "BackgroundPatchClosedAppsAllowList", .saved = 40, .type = labelList, .group = Group::backgroundPatch,
     .form = TextForm::label,
     .meaning = "When not empty, only these labels are updated in the background."},
    {.key = "BackgroundPatchClosedAppsBlockList", .saved = 41, .type = labelList, .group = Group::backgroundPatch,
     .form = TextForm::label,
     .meaning = "Labels that are never updated in the background."},
    {.key = "BackgroundPatchClosedAppsNotifyOnCompletion", .saved = 42, .type = boolean, .fallback = false,
     .group = Group::backgroundPatch,
     .meaning = "The end of a pass is told by a notification."},
    {.key = "BackgroundPatchClosedAppsScheduler", .saved = 43, .type = enumeration, .fallback = "inApp",
     .choices = rawNameAt<BackgroundPatchSchedulerMode>, .group = Group::backgroundPatch,
     .meaning = "Who starts the passes: the application, or the helper, which works without it."},
    {.key = "BackgroundPatchStartupJitterMaxMinutes", .type = integer, .access = Access::managed,
     .fallback = std::int64_t{0}, .range = {0, 1440},
     .meaning = "Spreads the first pass of a fleet over so many minutes; 0 is off."},
    {.key = "UpdatesAvailableNotificationsEnabled", .saved = 44, .type = boolean, .fallback = true,
     .group = Group::backgroundPatch,
     .meaning = "New updates are told by a notification."},
    {.key = "WorkflowStageUpdates", .saved = 34, .type = boolean, .fallback = true, .group = Group::backgroundPatch,
     .meaning = "Installers are downloaded when an update is found, before anything is installed."},
    {.key = "WorkflowUpdateAllErrorCompletesPatching", .saved = 35, .type = boolean, .fallback = false,
     .group = Group::updateAllErrorPolicy,
     .meaning = "An Update All with errors completes the cycle instead of being tried again."},
    {.key = "SelfUpdateEnabled", .saved = 47, .type = boolean, .fallback = false, .group = Group::selfUpdate,
     .meaning = "Corvane updates itself silently."},
    {.key = "AppSelfUpdateEnabled", .type = boolean, .access = Access::managed, .group = Group::selfUpdate,
     .formerNameOf = "SelfUpdateEnabled",
     .meaning = "Former name of SelfUpdateEnabled in profiles; counts where no profile sets the new one."},
    {.key = "SelfUpdateLabel", .saved = 48, .type = text, .fallback = "corvane4", .group = Group::selfUpdate,
     .form = TextForm::label,
     .meaning = "The label that Corvane updates itself by."},
    {.key = "SelfUpdateFrequency", .saved = 49, .type = enumeration, .fallback = "weekly",
     .choices = rawNameAt<SelfUpdateFrequency>, .group = Group::selfUpdate,
     .meaning = "How often Corvane looks for its own update."},
    {.key = "SelfUpdateReleaseListURL", .type = text, .access = Access::managed,
     .form = TextForm::webAddress,
     .meaning = "List of releases, as JSON, that names the version behind a build of Corvane; with none, the build is "
                "shown."},
    {.key = "AutoResetHelperOnLaunch", .saved = 33, .type = boolean, .fallback = true, .group = Group::helperBehavior,
     .meaning = "A helper that no longer answers is registered anew, at most once an hour."},
    // Comparison, webhooks, diagnostics, identity
    {.key = "VersionComparisonMethod", .saved = 25, .type = enumeration, .fallback = "IS_AT_LEAST",
     .choices = rawNameAt<VersionComparisonMethod>, .group = Group::versionComparison,
     .meaning = "When an installed version counts as current: at least the latest, or exactly it."},
    {.key = "VersionComparisonInstallomatorFallback", .saved = 26, .type = boolean, .fallback = false,
     .group = Group::versionComparison,
     .meaning = "Installomator itself is asked where a label's data tells no version."},
    {.key = "WebhookFeature", .saved = 27, .type = enumeration, .fallback = "off", .choices = rawNameAt<WebhookFeature>,
     .group = Group::webhooks,
     .meaning = "Which results are sent to the webhooks."},
    {.key = "WebhookURLSlack", .saved = 28, .type = optionalText, .group = Group::webhooks, .neverLogged = true,
     .redacted = true,
     .form = TextForm::secureAddress,
     .meaning = "Address of the Slack webhook."},
    {.key = "WebhookURLTeams", .saved = 29, .type = optionalText, .group = Group::webhooks, .neverLogged = true,
     .redacted = true,
     .form = TextForm::secureAddress,
     .meaning = "Address of the Teams workflow webhook."},
    {.key = "TelemetryEnabled", .saved = 30, .type = boolean, .fallback = true,
     .meaning = "Anonymous usage signals are sent."},
    {.key = "TelemetryEndpoint", .type = text, .access = Access::managed,
     .form = TextForm::webAddress,
     .meaning = "Address that usage signals go to; with none, nothing is sent."},
    {.key = "NetworkProbeURL", .type = text, .access = Access::managed,
     .form = TextForm::webAddress,
     .meaning = "Page whose unaltered answer proves that the internet is reached; with none, the link's own word "
                "counts."},
    {.key = "VerboseMode", .saved = 31, .type = boolean, .fallback = false, .group = Group::debugSettings,
     .meaning = "VERBOSE lines reach the log."},
    {.key = "DebugMode", .saved = 32, .type = boolean, .fallback = false, .group = Group::debugSettings,
     .meaning = "Same effect on the log as VerboseMode."},
    {.key = "AdminTestModeEnabled", .type = boolean, .access = Access::managed, .fallback = false,
     .meaning = "The settings window shows the controls for trying the workflow out."},
    {.key = "NotificationPolicy", .type = dictionary, .access = Access::managed,
     .choices = rawNameAt<CRVNotificationPresentation>, .entries = rawNameAt<CRVNotificationType>,
     .meaning = "Kind of notification to \"banner\" or \"persistent\"; kinds left out are banners, but "
                "hardDeadlineReminder is persistent."},
    {.key = "AppTitle", .type = text, .access = Access::managed, .fallback = "Corvane",
     .meaning = "The name that users see in place of Corvane."},
    {.key = "SupportTeamName", .type = text, .access = Access::managed, .group = Group::supportInfo,
     .meaning = "Whom users turn to."},
    {.key = "SupportTeamPhone", .type = text, .access = Access::managed, .group = Group::supportInfo,
     .meaning = "Telephone number of the support team."},
    {.key = "SupportTeamEmail", .type = text, .access = Access::managed, .group = Group::supportInfo,
     .form = TextForm::mailAddress,
     .meaning = "Mail address of the support team."},
    {.key = "SupportTeamWebsite", .type = text, .access = Access::managed, .group = Group::supportInfo,
     .form = TextForm::webAddress,
     .meaning = "Page of the support team, opened by Help."},
    // The application's own behaviour
    {.key = "LockSettings", .type = boolean, .access = Access::managed, .fallback = false,
     .meaning = "Every control of the settings window is read-only."},
    {.key = "ManagedSilentLaunchEnabled", .type = boolean, .access = Access::managed, .fallback = false,
     .meaning = "The application starts without its window."},
    {.key = "ShowMenuBarIcon", .type = boolean, .fallback = true,
     .meaning = "The menu-bar item is present."},
    {.key = "MenuBarHideQuit", .type = boolean, .access = Access::managed, .fallback = false,
     .meaning = "The menu-bar item offers no Quit."},
    {.key = "MenuBarConcealAdvancedActions", .type = boolean, .access = Access::managed, .fallback = false,
     .meaning = "The menu-bar item shows Settings and Quit only while Option is held."},
    {.key = "MenuBarWakeUpUsesRegularPolicy", .type = boolean, .fallback = false,
     .meaning = "A start in the background takes a place in the Dock for a moment, for menu bars that need it."},
    {.key = "DeferralDialogPrimaryButton", .type = enumeration, .access = Access::managed,
     .fallback = "continue", .choices = rawNameAt<DeferralAction>,
     .meaning = "The button of the prompt that Return presses."},
    {.key = "OpenAtLogin", .type = flexibleBoolean, .fallback = false,
     .meaning = "The application starts at login."},
    {.key = "KeepAlive", .type = flexibleBoolean, .fallback = false,
     .meaning = "The application is started again when it ends."},
    // State
    {.key = "FirstRunSetupCompleted", .type = boolean, .access = Access::state, .fallback = false,
     .profileMaySet = true,
     .meaning = "The first-run setup is done; a profile may set it to skip the setup."},
    {.key = "DiscoveredAppsData", .type = data, .access = Access::state,
     .meaning = "The inventory of the last discovery, as JSON."},
    {.key = "LastDiscoveryDate", .type = date, .access = Access::state,
     .meaning = "When applications were last discovered."},
    {.key = "LastUpdateCheckDate", .type = date, .access = Access::state,
     .meaning = "When updates were last checked for."},
    {.key = "LastFullInventoryCheckDate", .type = date, .access = Access::state,
     .meaning = "Start of the current DiscoveryFrequency interval."},
    {.key = "LastInventoryFingerprint", .type = text, .access = Access::state,
     .meaning = "Fingerprint of the set of installed applications at the last discovery."},
    {.key = "NextAutoLaunch", .type = date, .access = Access::state,
     .meaning = "When the deferral watcher next acts."},
    {.key = "AutomaticFocusDeferralArmed", .type = boolean, .access = Access::state, .fallback = false,
     .meaning = "NextAutoLaunch was set by an automatic deferral in Focus."},
    {.key = "PatchErrorRetryArmed", .type = boolean, .access = Access::state, .fallback = false,
     .meaning = "NextAutoLaunch was set to try again after errors."},
    {.key = "CurrentPatchingStartDate", .type = date, .access = Access::state,
     .meaning = "Start of the current patch cycle."},
    {.key = "LastPatchingCompletionDate", .type = date, .access = Access::state,
     .meaning = "When patching was last completed."},
    {.key = "NextCycleStartDate", .type = date, .access = Access::state,
     .meaning = "Start of the next patch cycle."},
    {.key = "HardDeferralDate", .type = date, .access = Access::state,
     .meaning = "Date limit of the hard deadline in this cycle."},
    {.key = "HardDeferralCount", .type = integer, .access = Access::state, .fallback = std::int64_t{0},
     .range = {0, kMostCount},
     .meaning = "Deferrals in this cycle."},
    {.key = "FocusDeferralDate", .type = date, .access = Access::state,
     .meaning = "Date limit of automatic deferrals in this cycle."},
    {.key = "FocusDeferralCount", .type = integer, .access = Access::state, .fallback = std::int64_t{0},
     .range = {0, kMostCount},
     .meaning = "Automatic deferrals in this cycle."},
    {.key = "HardDeadlineDialogDismissedUntil", .type = date, .access = Access::state,
     .meaning = "Until when a closed hard-deadline prompt stays closed."},
    {.key = "LastHardDeadlineFiredAt", .type = date, .access = Access::state,
     .meaning = "When a hard deadline last fired."},
    {.key = "UpdateAllErrorClearedLabels", .type = labelList, .access = Access::state,
     .form = TextForm::label,
     .meaning = "Labels set aside by an Update All that had errors."},
    {.key = "LastNotifiedPendingUpdatesCount", .type = integer, .access = Access::state,
     .fallback = std::int64_t{0}, .range = {0, kMostCount},
     .meaning = "Pending updates at the last notification of them."},
    {.key = "LastNotifiedACPowerRequiredCount", .type = integer, .access = Access::state,
     .fallback = std::int64_t{0}, .range = {0, kMostCount},
     .meaning = "Pending updates at the last request for mains power."},
    {.key = "LastAutoHelperResetDate", .type = date, .access = Access::state,
     .meaning = "When the helper was last reset by itself; removing it permits a reset at the next launch."},
    {.key = "LastObservedHelperPatchRunID", .type = text, .access = Access::state,
     .meaning = "The helper's background pass that was last told of."},
    {.key = "LastObservedScheduledDiscoveryRunID", .type = text, .access = Access::state,
     .meaning = "The helper's scheduled discovery that was last taken over."},
    {.key = "LastBackgroundPatchDate", .type = date, .access = Access::state,
     .meaning = "When a background pass last ran."},
    {.key = "LastSelfUpdateCheckDate", .type = date, .access = Access::state,
     .meaning = "When Corvane last looked for its own update."},
    {.key = "SelfUpdateDisplayBuild", .type = text, .access = Access::state,
     .meaning = "Build whose version for display was last looked up."},
    {.key = "SelfUpdateDisplayVersion", .type = text, .access = Access::state,
     .meaning = "Version for display that was found for it."},
    {.key = "SelfUpdateDisplayDate", .type = date, .access = Access::state,
     .meaning = "When it was found."},
    {.key = "LastRegisteredHelperCDHash", .type = text, .access = Access::state,
     .meaning = "Code digest of the helper that was last registered."},
    {.key = "SelfUpdateStartedAt", .type = date, .access = Access::state,
     .meaning = "When a self-update began; removed by the launch that follows it."},
    {.key = "BackgroundPatchAtLoginHandledSession", .type = date, .access = Access::state,
     .meaning = "Login time of the session whose pass at login has run."},
    {.key = "AdminTestModeAnchorOverrideActive", .type = boolean, .access = Access::state, .fallback = false,
     .meaning = "The cycle's start was set by hand and is left alone."},
});
// clang-format on
}  // namespace settings_rows

inline constexpr const auto& kSettings = settings_rows::all;

namespace settings_rows {
// What the settings window saves, in its order.
inline constexpr auto inSaveOrder = [] {
  constexpr auto isSaved = [](const Setting& setting) { return setting.saved > 0; };
  std::array<const Setting*, std::size_t(std::ranges::count_if(kSettings, isSaved))> rows{};
  for (const auto& setting : kSettings)
    if (isSaved(setting)) rows.at(std::size_t(setting.saved) - 1) = &setting;
  return rows;
}();
// The rows by their keys: settings are looked up all the time.
inline constexpr auto byKey = [] {
  std::array<const Setting*, kSettings.size()> rows{};
  std::ranges::transform(kSettings, rows.begin(), [](const Setting& setting) { return &setting; });
  std::ranges::sort(rows, {}, [](const Setting* setting) { return setting->key; });
  return rows;
}();
}  // namespace settings_rows

// Null when the table has no such key.
constexpr const Setting* findSetting(std::string_view key) {
  const auto found =
      std::ranges::lower_bound(settings_rows::byKey, key, {}, [](const Setting* setting) { return setting->key; });
  return found != settings_rows::byKey.end() && (*found)->key == key ? *found : nullptr;
}

// A place in the order of saving is taken once, and none is left out.
static_assert([] {
  for (std::size_t i = 0; i < settings_rows::inSaveOrder.size(); ++i)
    if (std::size_t(settings_rows::inSaveOrder[i]->saved) != i + 1) return false;
  return true;
}());

// The keys of a group, in the table's order.
template <ManagedGroup group>
constexpr auto keysOf() {
  constexpr auto inGroup = [](const Setting& setting) { return setting.group == group; };
  std::array<std::string_view, std::size_t(std::ranges::count_if(kSettings, inGroup))> keys;
  std::size_t next = 0;
  for (const auto& setting : kSettings)
    if (inGroup(setting)) keys[next++] = setting.key;
  return keys;
}

// Defaults for initialisers; a wrong key or type does not compile.
consteval bool defaultFlag(std::string_view key) { return std::get<bool>(findSetting(key)->fallback); }
consteval std::int64_t defaultInteger(std::string_view key) {
  return std::get<std::int64_t>(findSetting(key)->fallback);
}
consteval std::string_view defaultText(std::string_view key) {
  const auto& fallback = findSetting(key)->fallback;
  return std::holds_alternative<std::monostate>(fallback) ? std::string_view{} : std::get<std::string_view>(fallback);
}
template <class E>
consteval E defaultCase(std::string_view key) {
  for (const auto& entry : CaseNames<E>::all)
    if (entry.raw == std::get<std::string_view>(findSetting(key)->fallback)) return entry.value;
  throw "the table's default is no case of this enumeration";
}
inline std::vector<std::int64_t> defaultIntegers(std::string_view key) {
  const auto values = std::get<std::span<const std::int64_t>>(findSetting(key)->fallback);
  return {values.begin(), values.end()};
}

// The documents that are made from the table: docs/preferences.md; docs/preferences.schema.json, a JSON schema of what
// a profile may hold; and docs/org.corvane.Corvane.manifest.plist, which tells profile editors the same.
[[nodiscard]] std::string preferencesDocument();
[[nodiscard]] std::string preferencesSchema();
[[nodiscard]] std::string preferencesManifest();

// The title of a setting: its own, or the words of its key.
[[nodiscard]] std::string titleOf(const Setting& setting);

}  // namespace corvane
