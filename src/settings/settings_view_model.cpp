#include "settings/settings_view_model.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <variant>

#include "base/ascii.h"
#include "core/preferences/setting_values.h"

namespace corvane {
namespace {

struct GroupFlag {
  ManagedGroup group;
  bool ManagedFlags::*flag;
};

constexpr auto kGroupFlags = std::to_array<GroupFlag>({
    {ManagedGroup::installomator, &ManagedFlags::isInstallomatorManaged},
    {ManagedGroup::gitHubAPI, &ManagedFlags::isGitHubAPIManaged},
    {ManagedGroup::installomatorAssembly, &ManagedFlags::isInstallomatorAssemblyManaged},
    {ManagedGroup::supportInfo, &ManagedFlags::isSupportInfoManaged},
    {ManagedGroup::deferralSettings, &ManagedFlags::isDeferralSettingsManaged},
    {ManagedGroup::labels, &ManagedFlags::isLabelsManaged},
    {ManagedGroup::webhooks, &ManagedFlags::isWebhooksManaged},
    {ManagedGroup::debugSettings, &ManagedFlags::isDebugSettingsManaged},
    {ManagedGroup::helperBehavior, &ManagedFlags::isHelperBehaviorManaged},
    {ManagedGroup::backgroundPatch, &ManagedFlags::isBackgroundPatchManaged},
    {ManagedGroup::selfUpdate, &ManagedFlags::isSelfUpdateManaged},
    {ManagedGroup::discoveryFilters, &ManagedFlags::isDiscoveryFiltersManaged},
    {ManagedGroup::versionComparison, &ManagedFlags::isVersionComparisonManaged},
    {ManagedGroup::updateAllErrorPolicy, &ManagedFlags::isUpdateAllErrorPolicyManaged},
    {ManagedGroup::businessHours, &ManagedFlags::isBusinessHoursManaged},
});

using Options = InstallomatorOptions;
struct OptionField {
  std::string_view key;
  std::variant<std::string Options::*, bool Options::*, std::int64_t Options::*> member;
};

constexpr auto kOptionFields = std::to_array<OptionField>({
    {"NOTIFY", &Options::notify},
    {"BLOCKING_PROCESS_ACTION", &Options::blockingProcessAction},
    {"LOGO", &Options::logo},
    {SettingsViewModel::kLogoPath, &Options::logoCustomPath},
    {"IGNORE_APP_STORE_APPS", &Options::ignoreAppStoreApps},
    {"SYSTEMOWNER", &Options::systemOwnerRoot},
    {"INSTALL", &Options::forceInstall},
    {"REOPEN", &Options::reopenApp},
    {"INTERRUPT_DND", &Options::interruptDND},
    {"IGNORE_DND_APPS", &Options::ignoreDndApps},
    {"PROXY", &Options::proxy},
    {"PROMPT_TIMEOUT", &Options::promptTimeout},
});

const OptionField* findOption(std::string_view key) {
  const auto found = std::ranges::find(kOptionFields, key, &OptionField::key);
  return found == kOptionFields.end() ? nullptr : &*found;
}

void assign(std::string& field, const PlistValue& value) { field = value.string().value_or(field); }
void assign(bool& field, const PlistValue& value) { field = value.boolean().value_or(field); }
void assign(std::int64_t& field, const PlistValue& value) { field = value.integer().value_or(field); }

// A pasted line break belongs to no text of one line, and neither does a NUL.
std::string onOneLine(std::string_view typed, std::string_view inPlaceOfBreaks) {
  std::string line;
  for (const char sign : typed) {
    if (sign == '\n' || sign == '\r')
      line += inPlaceOfBreaks;
    else if (sign != '\0')
      line += sign;
  }
  return line;
}

std::optional<std::string> shown(const std::string& text, std::string_view placeholder) {
  const auto said = trimmed(text);
  if (said.empty() || equalIgnoringCase(said, "hide") || said == placeholder) return std::nullopt;
  return std::string(said);
}

std::string orNone(std::optional<std::int64_t> limit) { return limit ? std::to_string(*limit) : "none"; }

}  // namespace

ManagedFlags ManagedFlags::of(const PreferenceManager& preferences) {
  ManagedFlags flags;
  flags.isSettingsLocked = preferences.readPreference("LockSettings", defaultFlag("LockSettings"));
  for (const auto& [group, flag] : kGroupFlags) {
    const bool isAsked = !flags.isSettingsLocked || group == ManagedGroup::supportInfo;
    flags.*flag = !isAsked || preferences.isAnyManaged(group);
  }
  return flags;
}

bool ManagedFlags::isManaged(ManagedGroup group) const {
  const auto found = std::ranges::find(kGroupFlags, group, &GroupFlag::group);
  return found == kGroupFlags.end() ? isSettingsLocked : this->*(found->flag);
}

SupportInfo SupportInfo::of(const CorvaneConfiguration& config) {
  return {.name = shown(config.supportTeamName, "Add IT Support"),
          .phone = shown(config.supportTeamPhone, "Add IT Phone Number"),
          .email = shown(config.supportTeamEmail, "Add email"),
          .website = shown(config.supportTeamWebsite, "Add IT Help site")};
}

SettingsViewModel::SettingsViewModel(Services services)
    : config(*services.preferences.loadConfiguration()),
      s_(services),
      flags_(ManagedFlags::of(services.preferences)),
      savedConfig_(config) {
  parseInstallomatorOptions();
  savedOptions_ = options;
}

bool SettingsViewModel::hasManagedSettings() const {
  return flags_.isSettingsLocked || std::ranges::any_of(kGroupFlags, [&](const GroupFlag& entry) {
           return entry.group != ManagedGroup::supportInfo && entry.group != ManagedGroup::installomatorAssembly &&
                  flags_.*(entry.flag);
         });
}

bool SettingsViewModel::isManaged(std::string_view key) const {
  return flags_.isSettingsLocked || s_.preferences.isManaged(key);
}

bool SettingsViewModel::hasEdits() const { return config != savedConfig_ || options != savedOptions_; }

bool SettingsViewModel::isOption(std::string_view key) { return findOption(key) != nullptr; }

PlistValue SettingsViewModel::value(std::string_view key) const {
  if (const auto* option = findOption(key))
    return std::visit([&](auto member) { return PlistValue(options.*member); }, option->member);
  return fieldValue(config, key);
}

void SettingsViewModel::setValue(std::string_view key, const PlistValue& value) {
  if (const auto* option = findOption(key))
    std::visit([&](auto member) { assign(options.*member, value); }, option->member);
  else
    setField(config, key, value);
}

std::string SettingsViewModel::setText(std::string_view key, std::string_view typed) {
  const auto* setting = findSetting(key);
  const auto type = setting != nullptr ? setting->type : SettingType::text;
  if (type == SettingType::labelList || type == SettingType::pathList) {
    setValue(key, canonical(*setting, PlistValue(typed)).value_or(PlistValue()));
    return type == SettingType::pathList ? std::string(typed) : onOneLine(typed, " ");
  }
  auto line = onOneLine(typed, "");
  setValue(key, PlistValue(line));
  return line;
}

std::string SettingsViewModel::text(std::string_view key) const {
  const auto current = value(key);
  if (const auto text = current.string()) return std::string(*text);
  std::string joined;
  const auto* setting = findSetting(key);
  const char separator = setting != nullptr && setting->type == SettingType::pathList ? '\n' : ' ';
  if (const auto* items = current.array())
    for (const auto& item : *items) {
      if (&item != &items->front()) joined += separator;
      joined += item.string().value_or("");
    }
  return joined;
}

bool SettingsViewModel::holdsBusinessHours() const {
  return config.businessHoursStartTime && config.businessHoursEndTime;
}

void SettingsViewModel::holdBusinessHours(bool hold) {
  auto& start = config.businessHoursStartTime;
  auto& end = config.businessHoursEndTime;
  if (hold) {
    if (!start) start = formerStart_.value_or(std::string(kDefaultBusinessHoursStart));
    if (!end) end = formerEnd_.value_or(std::string(kDefaultBusinessHoursEnd));
  } else {
    formerStart_ = std::exchange(start, std::nullopt);
    formerEnd_ = std::exchange(end, std::nullopt);
  }
}

void SettingsViewModel::save() {
  if (flags_.isSettingsLocked) return;
  for (const auto* setting : settings_rows::inSaveOrder) {
    if (setting->key == "InstallomatorOptions") composeInstallomatorOptions();
    if (setting->key == "GitHubAPIToken") config.githubAPIToken = std::string(trimmed(config.githubAPIToken));
    if (auto value = savedValue(config, *setting))
      s_.preferences.writePreference(setting->key, std::move(*value));
    else
      s_.preferences.deletePreference(setting->key);
    if (setting->key == "TelemetryEnabled") followTelemetry();
  }
  savedConfig_ = config;
  savedOptions_ = options;
  s_.notifications.post(CorvaneSettingsDidChange{});
  logSave();
  lastSavedAt_ = s_.clock.now();
}

void SettingsViewModel::followTelemetry() {
  if (config.telemetryEnabled)
    s_.telemetry.start();
  else if (s_.telemetry.started())
    s_.telemetry.stop();
}

// Neither the token nor an address of a webhook is ever part of it.
void SettingsViewModel::logSave() const {
  Logger(s_.log, "SettingsViewModel")
      .info(fmt::format(
          "Saved settings - ignoredLabels=[{}], requiredLabels=[{}], optionalLabels=[{}], deferralTimerDefault={}, "
          "deadlineCountFocus={}, deadlineDaysFocus={}, deadlineCountHard={}, deadlineDaysHard={}, "
          "installomatorVersion={}, versionComparisonMethod={}, WebhookFeature={}, VerboseMode={}, debugMode={}",
          fmt::join(config.ignoredLabels, " "), fmt::join(config.requiredLabels, " "),
          fmt::join(config.optionalLabels, " "), config.deferralTimerDefault, orNone(config.deadlineCountFocus),
          orNone(config.deadlineDaysFocus), orNone(config.deadlineCountHard), orNone(config.deadlineDaysHard),
          rawName(config.installomatorVersion), rawName(config.versionComparisonMethod), rawName(config.webhookFeature),
          config.verboseMode, config.debugMode));
}

std::string SettingsViewModel::composeInstallomatorOptions() {
  config.installomatorOptions = corvane::composeInstallomatorOptions(options);
  return config.installomatorOptions;
}

void SettingsViewModel::parseInstallomatorOptions() {
  options = corvane::parseInstallomatorOptions(config.installomatorOptions);
}

}  // namespace corvane
