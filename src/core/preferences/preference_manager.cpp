#include "core/preferences/preference_manager.h"

#include <utility>

namespace corvane {
namespace {

template <class T>
std::optional<T> valueAs(const PlistValue& value) {
  if constexpr (std::same_as<T, bool>) {
    return value.boolean();
  } else if constexpr (std::same_as<T, std::int64_t>) {
    return value.integer();
  } else if constexpr (std::same_as<T, double>) {
    return value.number();
  } else if constexpr (std::same_as<T, Date>) {
    return value.date();
  } else if constexpr (std::same_as<T, std::string>) {
    const auto text = value.string();
    return text ? std::optional(std::string(*text)) : std::nullopt;
  } else {
    if (!value.array()) return std::nullopt;
    std::vector<std::string> texts;
    for (const auto& item : *value.array())
      if (const auto text = item.string()) texts.emplace_back(*text);
    return texts;
  }
}

// The value in force of a key that the table does not know.
std::optional<PlistValue> unlisted(const Domains& domains, std::string_view key) {
  for (const auto* domain : {&domains.managed, &domains.user})
    if (const auto found = domain->find(key); found != domain->end()) return found->second;
  return std::nullopt;
}

bool isSetting(std::string_view key) {
  const auto* row = findSetting(key);
  return row == nullptr || row->access != SettingAccess::state;
}

// The program's own state changes all the time, and no field of the configuration is made of it.
bool haveSameSettings(const PlistDict& a, const PlistDict& b) {
  auto left = a.begin();
  auto right = b.begin();
  while (left != a.end() || right != b.end()) {
    const int order = left == a.end() ? 1 : right == b.end() ? -1 : left->first.compare(right->first);
    const bool same = order == 0 && left->second == right->second;
    if (!same && isSetting(order <= 0 ? left->first : right->first)) return false;
    if (order <= 0) ++left;
    if (order >= 0) ++right;
  }
  return true;
}

void setOrErase(PlistDict& domain, const char* key, const std::optional<Date>& date) {
  if (date)
    domain.insert_or_assign(key, PlistValue(*date));
  else
    domain.erase(key);
}

}  // namespace

// Made from one pair of snapshots, which their versions name.
struct PreferenceManager::Loaded {
  DomainSnapshot managed;
  DomainSnapshot user;
  PreferenceMoment moment;

  [[nodiscard]] PreferenceDomains::Versions versions() const {
    return {.user = user.version, .managed = managed.version};
  }
};

PreferenceManager::PreferenceManager(PreferenceDomains& domains, NotificationCenter& notifications, LogSink& log)
    : domains_(domains), notifications_(notifications), log_(log, "PreferenceManager") {}

Lease PreferenceManager::startWatching() {
  return domains_.watch([this] { notifications_.post(CorvaneSettingsDidChange{}); });
}

void PreferenceManager::tell(const std::vector<SettingProblem>& problems) const {
  for (const auto& problem : problems) {
    const bool fresh = [&] {
      const std::lock_guard lock(mutex_);
      return told_.emplace(problem.key).second;
    }();
    if (fresh) log_.warning(problem.what);
  }
}

EffectiveValue PreferenceManager::find(std::string_view key, const Look& look) const {
  const Domains domains{*look.managed.values, *look.user.values};
  if (const auto* setting = findSetting(key)) {
    std::vector<SettingProblem> problems;
    auto found = effectiveSetting(*setting, domains, &problems);
    tell(problems);
    return found;
  }
  const auto source = domains.managed.contains(key) ? ValueSource::managed : ValueSource::user;
  auto value = unlisted(domains, key);
  return value ? EffectiveValue{source, std::move(value)} : EffectiveValue{};
}

template <PreferenceValue T>
std::optional<T> PreferenceManager::valueOf(std::string_view key, const Look& look) const {
  const auto found = find(key, look);
  return found.value ? valueAs<T>(*found.value) : std::nullopt;
}

template <PreferenceValue T>
std::optional<T> PreferenceManager::readOptional(std::string_view key) const {
  return valueOf<T>(key, look());
}
template std::optional<bool> PreferenceManager::readOptional<bool>(std::string_view) const;
template std::optional<std::int64_t> PreferenceManager::readOptional<std::int64_t>(std::string_view) const;
template std::optional<double> PreferenceManager::readOptional<double>(std::string_view) const;
template std::optional<std::string> PreferenceManager::readOptional<std::string>(std::string_view) const;
template std::optional<Date> PreferenceManager::readOptional<Date>(std::string_view) const;
template std::optional<std::vector<std::string>> PreferenceManager::readOptional<std::vector<std::string>>(
    std::string_view) const;

void PreferenceManager::changeUser(std::string_view keys, const std::function<void(PlistDict&)>& change) {
  if (const auto done = domains_.changeUser(change); !done)
    log_.warning("Could not write " + std::string(keys) + ": " + done.error().text);
}

void PreferenceManager::writePreference(std::string_view key, PlistValue value) {
  changeUser(key, [&](PlistDict& domain) { domain.insert_or_assign(std::string(key), std::move(value)); });
}

void PreferenceManager::writePreference(std::string_view key, const std::vector<std::string>& values) {
  writePreference(key, PlistValue(PlistArray(values.begin(), values.end())));
}

void PreferenceManager::deletePreference(std::string_view key) {
  changeUser(key, [&](PlistDict& domain) { domain.erase(std::string(key)); });
}

bool PreferenceManager::readFlexibleBool(std::string_view key, bool defaultValue) const {
  const auto found = find(key);
  return (found.value ? flexibleBool(*found.value) : std::nullopt).value_or(defaultValue);
}

bool PreferenceManager::isManaged(std::string_view key) const { return domains_.managed().values->contains(key); }

bool PreferenceManager::isAnyManaged(ManagedGroup group) const {
  const auto managed = domains_.managed();
  return std::ranges::any_of(kSettings, [&](const Setting& setting) {
    return setting.group == group && managed.values->contains(setting.key);
  });
}

bool PreferenceManager::isManagedByMDM() const { return !domains_.managed().values->empty(); }

std::shared_ptr<const PreferenceManager::Loaded> PreferenceManager::load() const {
  std::shared_ptr<const Loaded> before;
  {
    const auto versions = domains_.versions();
    const std::lock_guard lock(mutex_);
    if (loaded_ && loaded_->versions() == versions) return loaded_;
    before = loaded_;
  }
  const auto now = look();
  const auto date = [&](std::string_view key) { return valueOf<Date>(key, now); };
  const auto count = [&](std::string_view key) { return valueOf<std::int64_t>(key, now).value_or(0); };
  const auto flag = [&](std::string_view key) { return valueOf<bool>(key, now).value_or(false); };
  auto fresh = std::make_shared<const Loaded>(
      Loaded{.managed = now.managed,
             .user = now.user,
             .moment = {.config = configurationOf(now, before.get()),
                        .cadence = {.currentPatchingStartDate = date("CurrentPatchingStartDate"),
                                    .lastPatchingCompletionDate = date("LastPatchingCompletionDate"),
                                    .nextCycleStartDate = date("NextCycleStartDate")},
                        .deferrals = {.focusDeferralCount = count("FocusDeferralCount"),
                                      .hardDeferralCount = count("HardDeferralCount"),
                                      .hardDeferralDate = date("HardDeferralDate")},
                        .focusDeferralDate = date("FocusDeferralDate"),
                        .nextAutoLaunch = date("NextAutoLaunch"),
                        .automaticFocusDeferralArmed = flag("AutomaticFocusDeferralArmed"),
                        .patchErrorRetryArmed = flag("PatchErrorRetryArmed"),
                        .hardDeadlineDialogDismissedUntil = date("HardDeadlineDialogDismissedUntil"),
                        .lastHardDeadlineFiredAt = date("LastHardDeadlineFiredAt")}});
  const std::lock_guard lock(mutex_);
  loaded_ = fresh;
  return fresh;
}

SharedConfiguration PreferenceManager::configurationOf(const Look& look, const Loaded* before) const {
  if (before != nullptr && before->managed.version == look.managed.version &&
      haveSameSettings(*before->user.values, *look.user.values))
    return before->moment.config;
  auto [config, problems] = configurationFrom({*look.managed.values, *look.user.values});
  tell(problems);
  return SharedConfiguration(std::make_shared<const CorvaneConfiguration>(std::move(config)));
}

SharedConfiguration PreferenceManager::loadConfiguration() const { return load()->moment.config; }

std::shared_ptr<const PreferenceMoment> PreferenceManager::moment() const {
  auto loaded = load();
  const auto* moment = &loaded->moment;
  return {std::move(loaded), moment};
}

ValueSource PreferenceManager::valueSource(std::string_view key) const { return find(key).source; }

JsonValue PreferenceManager::effectiveValue(std::string_view key) const {
  if (const auto found = find(key); found.value) return jsonFrom(*found.value);
  const auto* setting = findSetting(key);
  return setting ? jsonFrom(setting->fallback) : JsonValue();
}

std::optional<Apps> PreferenceManager::readDiscoveredApps() const {
  const auto found = find("DiscoveredAppsData");
  if (!found.value) return std::nullopt;
  const auto json = parseJson(found.value->data().value_or(""));
  auto apps = json ? appsFromJson(*json) : std::unexpected(json.error());
  if (apps) return std::move(*apps);
  tell({{"DiscoveredAppsData", "DiscoveredAppsData is damaged and counts as absent: " + apps.error().text}});
  return std::nullopt;
}

void PreferenceManager::writeDiscoveredApps(const Apps& apps) {
  writePreference("DiscoveredAppsData", PlistData{writeJson(toJson(apps))});
}

void PreferenceManager::writeNextAutoLaunch(Date date, bool automaticFocusDeferral, bool errorRetry) {
  changeUser("NextAutoLaunch", [&](PlistDict& domain) {
    domain.insert_or_assign("NextAutoLaunch", PlistValue(date));
    domain.insert_or_assign("AutomaticFocusDeferralArmed", PlistValue(automaticFocusDeferral));
    domain.insert_or_assign("PatchErrorRetryArmed", PlistValue(errorRetry));
  });
  notifications_.post(CorvaneNextAutoLaunchDidChange{});
}

void PreferenceManager::clearNextAutoLaunch() {
  changeUser("NextAutoLaunch", [](PlistDict& domain) {
    for (const auto* key : {"NextAutoLaunch", "AutomaticFocusDeferralArmed", "PatchErrorRetryArmed"}) domain.erase(key);
  });
  notifications_.post(CorvaneNextAutoLaunchDidChange{});
}

CadenceState PreferenceManager::readPatchingCadenceState() const { return load()->moment.cadence; }
DeferralInfo PreferenceManager::readDeferralInfo() const { return load()->moment.deferrals; }
std::optional<Date> PreferenceManager::readFocusDeferralDate() const { return load()->moment.focusDeferralDate; }
std::optional<Date> PreferenceManager::readNextAutoLaunch() const { return load()->moment.nextAutoLaunch; }
bool PreferenceManager::readAutomaticFocusDeferralArmed() const { return load()->moment.automaticFocusDeferralArmed; }
bool PreferenceManager::readPatchErrorRetryArmed() const { return load()->moment.patchErrorRetryArmed; }
std::optional<Date> PreferenceManager::readHardDeadlineDialogDismissedUntil() const {
  return load()->moment.hardDeadlineDialogDismissedUntil;
}
std::optional<Date> PreferenceManager::readLastHardDeadlineFiredAt() const {
  return load()->moment.lastHardDeadlineFiredAt;
}

void PreferenceManager::writePatchingCadenceState(const CadenceState& state) {
  changeUser("CurrentPatchingStartDate", [&](PlistDict& domain) {
    setOrErase(domain, "CurrentPatchingStartDate", state.currentPatchingStartDate);
    setOrErase(domain, "LastPatchingCompletionDate", state.lastPatchingCompletionDate);
    setOrErase(domain, "NextCycleStartDate", state.nextCycleStartDate);
  });
}

LabelSet PreferenceManager::readUpdateAllErrorClearedLabels() const {
  LabelSet labels;
  for (auto& text : readPreference<std::vector<std::string>>("UpdateAllErrorClearedLabels", {}))
    labels.emplace(std::move(text));
  return labels;
}

void PreferenceManager::addUpdateAllErrorClearedLabels(const Labels& labels) {
  changeUser("UpdateAllErrorClearedLabels", [&](PlistDict& domain) {
    std::set<std::string> all;
    const auto& stored = domain["UpdateAllErrorClearedLabels"];
    for (auto& text : valueAs<std::vector<std::string>>(stored).value_or(std::vector<std::string>{}))
      all.insert(std::move(text));
    for (const auto& label : labels) all.insert(label.text);
    domain["UpdateAllErrorClearedLabels"] = PlistArray(all.begin(), all.end());
  });
}

std::string PreferenceManager::readDeferralDialogPrimaryButton() const {
  return readPreference<std::string>("DeferralDialogPrimaryButton",
                                     std::string(defaultText("DeferralDialogPrimaryButton")));
}

}  // namespace corvane
