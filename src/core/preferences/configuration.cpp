#include "core/preferences/configuration.h"

#include <algorithm>

#include "base/ascii.h"
#include "base/time_of_day.h"
#include "core/preferences/setting_values.h"

namespace corvane {
namespace {

using Config = CorvaneConfiguration;

// From a canonical value to a field and back; each field's type decides.
void assign(bool& field, const PlistValue& value) { field = value.boolean().value_or(field); }
void assign(std::int64_t& field, const PlistValue& value) { field = value.integer().value_or(field); }
void assign(std::optional<std::int64_t>& field, const PlistValue& value) { field = value.integer(); }
void assign(std::string& field, const PlistValue& value) { field = value.string().value_or(field); }
void assign(Label& field, const PlistValue& value) { assign(field.text, value); }
void assign(std::optional<std::string>& field, const PlistValue& value) { field = value.string(); }
void assign(std::vector<std::string>& field, const PlistValue& value) {
  if (!value.array()) return;
  field.clear();
  for (const auto& item : *value.array()) field.emplace_back(item.string().value_or(""));
}
void assign(std::vector<std::int64_t>& field, const PlistValue& value) {
  if (!value.array()) return;
  field.clear();
  for (const auto& item : *value.array()) field.push_back(item.integer().value_or(0));
}
void assign(CRVNotificationPolicy& field, const PlistValue& value) {
  if (!value.dict()) return;
  for (const auto& [type, presentation] : *value.dict()) {
    const auto which = caseFromRaw<CRVNotificationType>(type);
    const auto how = caseFromRaw<CRVNotificationPresentation>(presentation.string().value_or(""));
    if (which && how) field.presentations[static_cast<std::size_t>(*which)] = *how;
  }
}
template <class E>
requires std::is_enum_v<E>
void assign(E& field, const PlistValue& value) { field = caseFromRaw<E>(value.string().value_or("")).value_or(field); }

PlistValue valueOf(bool field) { return field; }
PlistValue valueOf(std::int64_t field) { return field; }
PlistValue valueOf(const std::string& field) { return field; }
PlistValue valueOf(const Label& field) { return field.text; }
template <class T>
PlistValue valueOf(const std::optional<T>& field) {
  return field ? PlistValue(*field) : PlistValue();
}
template <class T>
PlistValue valueOf(const std::vector<T>& field) {
  return PlistArray(field.begin(), field.end());
}
PlistValue valueOf(const CRVNotificationPolicy& field) {
  PlistDict policy;
  for (const auto& entry : CaseNames<CRVNotificationType>::all)
    policy.emplace(entry.raw, rawName(field.presentationFor(entry.value)));
  return policy;
}
template <class E>
requires std::is_enum_v<E> PlistValue valueOf(E field) { return rawName(field); }

struct Binding {
  std::string_view key;
  void (*set)(Config&, const PlistValue&);
  PlistValue (*get)(const Config&);
};

template <auto Member>
constexpr Binding bind(std::string_view key) {
  return {key, [](Config& config, const PlistValue& value) { assign(config.*Member, value); },
          [](const Config& config) { return valueOf(config.*Member); }};
}

constexpr auto kBindings = std::to_array<Binding>({
    bind<&Config::installomatorVersion>("InstallomatorVersion"),
    bind<&Config::installomatorOptions>("InstallomatorOptions"),
    bind<&Config::installomatorAssembleFromFragments>("InstallomatorAssembleFromFragments"),
    bind<&Config::installomatorCustomPath>("InstallomatorCustomPath"),
    bind<&Config::githubAPIAuthEnabled>("GitHubAPIAuthEnabled"),
    bind<&Config::githubAPIToken>("GitHubAPIToken"),
    bind<&Config::ignoredLabels>("IgnoredLabels"),
    bind<&Config::requiredLabels>("RequiredLabels"),
    bind<&Config::optionalLabels>("OptionalLabels"),
    bind<&Config::ignoreExternalDrives>("IgnoreExternalDrives"),
    bind<&Config::ignoreFilePaths>("IgnoreFilePaths"),
    bind<&Config::discoverSelfUpdateLabel>("DiscoverSelfUpdateLabel"),
    bind<&Config::discoveryFrequency>("DiscoveryFrequency"),
    bind<&Config::deferralTimerDefault>("DeferralTimerDefault"),
    bind<&Config::deferralTimerMenu>("DeferralTimerMenu"),
    bind<&Config::deferralTimerFocus>("DeferralTimerFocus"),
    bind<&Config::deferralTimerError>("DeferralTimerError"),
    bind<&Config::focusDeferralNotificationsEnabled>("FocusDeferralNotificationsEnabled"),
    bind<&Config::ignoreDNDApps>("IgnoreDNDApps"),
    bind<&Config::deadlineCountFocus>("DeadlineCountFocus"),
    bind<&Config::deadlineCountHard>("DeadlineCountHard"),
    bind<&Config::deadlineDaysFocus>("DeadlineDaysFocus"),
    bind<&Config::deadlineDaysHard>("DeadlineDaysHard"),
    bind<&Config::dialogTimeoutDeferral>("DialogTimeoutDeferral"),
    bind<&Config::dialogTimeoutDeferralAction>("DialogTimeoutDeferralAction"),
    bind<&Config::hardDeadlineDialogAllowClose>("HardDeadlineDialogAllowClose"),
    bind<&Config::aggressivePatchDayDeferral>("AggressivePatchDayDeferral"),
    bind<&Config::patchingEndTime>("PatchingEndTime"),
    bind<&Config::patchWeekStartDay>("PatchWeekStartDay"),
    bind<&Config::daysUntilReset>("DaysUntilReset"),
    bind<&Config::monthlyPatchingCadenceEnabled>("MonthlyPatchingCadenceEnabled"),
    bind<&Config::monthlyPatchingCadenceOrdinalValue>("MonthlyPatchingCadenceOrdinalValue"),
    bind<&Config::monthlyPatchingCadenceWeekdayIndex>("MonthlyPatchingCadenceWeekdayIndex"),
    bind<&Config::businessHoursStartTime>("BusinessHoursStartTime"),
    bind<&Config::businessHoursEndTime>("BusinessHoursEndTime"),
    bind<&Config::backgroundPatchClosedAppsEnabled>("BackgroundPatchClosedAppsEnabled"),
    bind<&Config::backgroundPatchClosedAppsIntervalHours>("BackgroundPatchClosedAppsIntervalHours"),
    bind<&Config::backgroundPatchClosedAppsRequireOnAC>("BackgroundPatchClosedAppsRequireOnAC"),
    bind<&Config::backgroundPatchAtLogin>("BackgroundPatchAtLogin"),
    bind<&Config::backgroundPatchClosedAppsAllowList>("BackgroundPatchClosedAppsAllowList"),
    bind<&Config::backgroundPatchClosedAppsBlockList>("BackgroundPatchClosedAppsBlockList"),
    bind<&Config::backgroundPatchClosedAppsNotifyOnCompletion>("BackgroundPatchClosedAppsNotifyOnCompletion"),
    bind<&Config::backgroundPatchClosedAppsScheduler>("BackgroundPatchClosedAppsScheduler"),
    bind<&Config::backgroundPatchStartupJitterMaxMinutes>("BackgroundPatchStartupJitterMaxMinutes"),
    bind<&Config::updatesAvailableNotificationsEnabled>("UpdatesAvailableNotificationsEnabled"),
    bind<&Config::workflowStageUpdates>("WorkflowStageUpdates"),
    bind<&Config::workflowUpdateAllErrorCompletesPatching>("WorkflowUpdateAllErrorCompletesPatching"),
    bind<&Config::selfUpdateEnabled>("SelfUpdateEnabled"),
    bind<&Config::selfUpdateLabel>("SelfUpdateLabel"),
    bind<&Config::selfUpdateReleaseListURL>("SelfUpdateReleaseListURL"),
    bind<&Config::selfUpdateFrequency>("SelfUpdateFrequency"),
    bind<&Config::autoResetHelperOnLaunch>("AutoResetHelperOnLaunch"),
    bind<&Config::versionComparisonMethod>("VersionComparisonMethod"),
    bind<&Config::versionComparisonInstallomatorFallback>("VersionComparisonInstallomatorFallback"),
    bind<&Config::webhookFeature>("WebhookFeature"),
    bind<&Config::webhookURLSlack>("WebhookURLSlack"),
    bind<&Config::webhookURLTeams>("WebhookURLTeams"),
    bind<&Config::telemetryEnabled>("TelemetryEnabled"),
    bind<&Config::telemetryEndpoint>("TelemetryEndpoint"),
    bind<&Config::networkProbeURL>("NetworkProbeURL"),
    bind<&Config::verboseMode>("VerboseMode"),
    bind<&Config::debugMode>("DebugMode"),
    bind<&Config::adminTestModeEnabled>("AdminTestModeEnabled"),
    bind<&Config::notificationPolicy>("NotificationPolicy"),
    bind<&Config::appTitle>("AppTitle"),
    bind<&Config::supportTeamName>("SupportTeamName"),
    bind<&Config::supportTeamPhone>("SupportTeamPhone"),
    bind<&Config::supportTeamEmail>("SupportTeamEmail"),
    bind<&Config::supportTeamWebsite>("SupportTeamWebsite"),
});
// Compares keys and no addresses: under -fsanitize=undefined g++ 12 takes a test against null for no constant.
static_assert(std::ranges::all_of(kBindings, [](const Binding& binding) {
  return std::ranges::any_of(kSettings, [&](const Setting& setting) { return setting.key == binding.key; });
}));

// While only state changes, the configuration stays: see PreferenceManager.
static_assert(std::ranges::none_of(kBindings, [](const Binding& binding) {
  return std::ranges::any_of(kSettings, [&](const Setting& setting) {
    return setting.key == binding.key && setting.access == SettingAccess::state;
  });
}));

const Binding* findBinding(std::string_view key) {
  const auto found = std::ranges::find(kBindings, key, &Binding::key);
  return found == kBindings.end() ? nullptr : &*found;
}

// Both times are fine, and yet no moment lies between them: hardly what anybody meant.
bool hasEmptyBusinessHours(const Config& config) {
  return config.businessHoursStartTime && config.businessHoursEndTime &&
         minutesOfDay(*config.businessHoursStartTime) == minutesOfDay(*config.businessHoursEndTime);
}

}  // namespace

std::vector<std::string> CorvaneConfiguration::sanitizedIgnoreFilePaths() const {
  std::vector<std::string> kept;
  for (const auto& path : ignoreFilePaths) {
    std::string text(trimmed(path));
    if (!text.empty() && !std::ranges::count(kept, text)) kept.push_back(std::move(text));
  }
  return kept;
}

LoadedConfiguration configurationFrom(const Domains& domains) {
  LoadedConfiguration loaded;
  for (const auto& binding : kBindings) {
    const auto found = effectiveSetting(*findSetting(binding.key), domains, &loaded.problems);
    if (found.value) binding.set(loaded.config, *found.value);
  }
  if (hasEmptyBusinessHours(loaded.config))
    loaded.problems.push_back({"BusinessHoursEndTime", "BusinessHoursStartTime and BusinessHoursEndTime are both \"" +
                                                           *loaded.config.businessHoursEndTime +
                                                           "\": no moment is within business hours."});
  return loaded;
}

bool fillsField(std::string_view key) { return findBinding(key) != nullptr; }

PlistValue fieldValue(const Config& config, std::string_view key) {
  const auto* binding = findBinding(key);
  return binding != nullptr ? binding->get(config) : PlistValue();
}

void setField(Config& config, std::string_view key, const PlistValue& value) {
  if (const auto* binding = findBinding(key)) binding->set(config, value);
}

std::optional<PlistValue> savedValue(const Config& config, const Setting& setting) {
  auto value = setting.type == SettingType::pathList ? valueOf(config.sanitizedIgnoreFilePaths())
                                                     : fieldValue(config, setting.key);
  if (value == PlistValue()) return std::nullopt;
  const bool emptyIsAbsent = setting.type == SettingType::optionalText || setting.type == SettingType::timeOfDay;
  if (const auto text = value.string(); text && setting.emptyIsRemoved) value = PlistValue(trimmed(*text));
  const bool isEmpty = value.string() == "" || (value.array() && value.array()->empty());
  return isEmpty && (emptyIsAbsent || setting.emptyIsRemoved) ? std::nullopt : std::optional(std::move(value));
}

}  // namespace corvane
