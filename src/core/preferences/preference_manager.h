// The only door to the preference domain: settings with the managed domain over the user's, and the small
// state that outlives the process. It decides nothing.
#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/date.h"
#include "base/json.h"
#include "base/lease.h"
#include "base/notification_center.h"
#include "core/logging/logging_service.h"
#include "core/preferences/configuration.h"
#include "core/preferences/setting_values.h"
#include "core/preferences/settings_table.h"
#include "core/records/app_info.h"
#include "core/records/deferral_records.h"
#include "core/records/notifications.h"
#include "platform/preference_domains.h"

namespace corvane {

// The interval of scheduled discovery starts at the date under this key.
struct ScheduledDiscoveryPolicy {
  static constexpr std::string_view fullInventoryCheckDateKey = "LastFullInventoryCheckDate";
};

template <class T>
concept PreferenceValue = std::same_as<T, bool> || std::same_as<T, std::int64_t> || std::same_as<T, double> ||
    std::same_as<T, std::string> || std::same_as<T, Date> || std::same_as<T, std::vector<std::string>>;

// What is looked at again and again, all of one moment: the configuration, and the state of cycle and deferrals as the
// reads of the same names give it.
struct PreferenceMoment {
  SharedConfiguration config;
  CadenceState cadence;
  DeferralInfo deferrals;
  std::optional<Date> focusDeferralDate;
  std::optional<Date> nextAutoLaunch;
  bool automaticFocusDeferralArmed = false;
  bool patchErrorRetryArmed = false;
  std::optional<Date> hardDeadlineDialogDismissedUntil;
  std::optional<Date> lastHardDeadlineFiredAt;
};

// Any thread, but `startWatching`. Reads never fail: a missing, damaged, wrongly typed or out-of-range value
// counts as absent. Writes report no error; one that fails leaves a warning with its key in the log. What was
// written is seen by the next read.
class PreferenceManager {
 public:
  PreferenceManager(PreferenceDomains& domains, NotificationCenter& notifications, LogSink& log);

  // From now on a change of either domain by another program posts CorvaneSettingsDidChange. Main thread.
  Lease startWatching();

  template <PreferenceValue T>
  [[nodiscard]] T readPreference(std::string_view key, T defaultValue) const {
    return readOptional<T>(key).value_or(std::move(defaultValue));
  }
  template <PreferenceValue T>
  [[nodiscard]] std::optional<T> readOptional(std::string_view key) const;

  void writePreference(std::string_view key, PlistValue value);
  void writePreference(std::string_view key, const std::vector<std::string>& values);
  // Removes the user's value, so that a managed value or the default shows.
  void deletePreference(std::string_view key);

  // Booleans, numbers (0 is false) and the texts true, yes, on, 1, false, no, off, 0 in any case.
  [[nodiscard]] bool readFlexibleBool(std::string_view key, bool defaultValue) const;

  [[nodiscard]] bool isManaged(std::string_view key) const;
  template <class Keys>
  [[nodiscard]] bool isAnyManaged(const Keys& keys) const {
    for (const auto& key : keys)
      if (isManaged(key)) return true;
    return false;
  }
  [[nodiscard]] bool isAnyManaged(ManagedGroup group) const;
  // The managed domain sets anything at all.
  [[nodiscard]] bool isManagedByMDM() const;

  // Managed values over user values over defaults; the same object while no setting has changed.
  [[nodiscard]] SharedConfiguration loadConfiguration() const;

  // One look at both domains for whoever needs several of these values; never null. What is written later is not in it.
  [[nodiscard]] std::shared_ptr<const PreferenceMoment> moment() const;

  // For listings: where the value in force comes from, and that value as JSON (dates as ISO 8601, data as its
  // length in bytes; null when absent). Values of neverLogged keys are for the caller to hide.
  [[nodiscard]] ValueSource valueSource(std::string_view key) const;
  [[nodiscard]] JsonValue effectiveValue(std::string_view key) const;

  // Absent for missing or undecodable data.
  [[nodiscard]] std::optional<Apps> readDiscoveredApps() const;
  void writeDiscoveredApps(const Apps& apps);

  [[nodiscard]] std::optional<Date> readAppLastDiscoveryDate() const;
  [[nodiscard]] std::optional<Date> readAppLastUpdateCheckDate() const;
  [[nodiscard]] std::optional<std::string> readLastInventoryFingerprint() const;
  void writeLastInventoryFingerprint(const std::string& fingerprint);

  // When the watcher next acts and why it was armed: date and flags change in one write, which is followed by
  // CorvaneNextAutoLaunchDidChange. Clearing removes all three.
  [[nodiscard]] std::optional<Date> readNextAutoLaunch() const;
  void writeNextAutoLaunch(Date date, bool automaticFocusDeferral, bool errorRetry);
  void clearNextAutoLaunch();
  [[nodiscard]] bool readAutomaticFocusDeferralArmed() const;
  [[nodiscard]] bool readPatchErrorRetryArmed() const;
  void clearPatchErrorRetryArmed();

  // Read and written whole; absent dates remove their keys.
  [[nodiscard]] CadenceState readPatchingCadenceState() const;
  void writePatchingCadenceState(const CadenceState& state);

  // The counters and dates of deferrals in this cycle.
  [[nodiscard]] DeferralInfo readDeferralInfo() const;
  [[nodiscard]] std::optional<Date> readFocusDeferralDate() const;

  [[nodiscard]] std::optional<Date> readHardDeadlineDialogDismissedUntil() const;
  void writeHardDeadlineDialogDismissedUntil(Date date);
  void clearHardDeadlineDialogDismissedUntil();
  [[nodiscard]] std::optional<Date> readLastHardDeadlineFiredAt() const;
  void writeLastHardDeadlineFiredAt(Date date);
  void clearLastHardDeadlineFiredAt();

  // Labels set aside by a failed Update All.
  [[nodiscard]] LabelSet readUpdateAllErrorClearedLabels() const;
  void addUpdateAllErrorClearedLabels(const Labels& labels);
  void clearUpdateAllErrorClearedLabels();

  [[nodiscard]] std::int64_t readLastNotifiedPendingUpdatesCount() const;
  void writeLastNotifiedPendingUpdatesCount(std::int64_t count);
  [[nodiscard]] std::int64_t readLastNotifiedACPowerRequiredCount() const;
  void writeLastNotifiedACPowerRequiredCount(std::int64_t count);

  [[nodiscard]] std::optional<Date> readLastAutoHelperResetDate() const;
  void writeLastAutoHelperResetDate(Date date);
  void clearLastAutoHelperResetDate();

  [[nodiscard]] std::optional<std::string> readLastObservedHelperPatchRunID() const;
  void writeLastObservedHelperPatchRunID(const std::string& runID);
  [[nodiscard]] std::optional<std::string> readLastObservedScheduledDiscoveryRunID() const;
  void writeLastObservedScheduledDiscoveryRunID(const std::string& runID);

  [[nodiscard]] std::optional<Date> readLastBackgroundPatchDate() const;
  void writeLastBackgroundPatchDate(Date date);
  [[nodiscard]] std::optional<Date> readLastSelfUpdateCheckDate() const;
  void writeLastSelfUpdateCheckDate(Date date);

  [[nodiscard]] bool readFirstRunSetupCompleted() const;
  void writeFirstRunSetupCompleted(bool completed);

  [[nodiscard]] bool readManagedSilentLaunchEnabled() const;
  [[nodiscard]] bool readMenuBarHideQuit() const;
  [[nodiscard]] bool readMenuBarConcealAdvancedActions() const;
  [[nodiscard]] bool readAdminTestModeEnabled() const;
  // "defer" or "continue".
  [[nodiscard]] std::string readDeferralDialogPrimaryButton() const;

  // Several keys of the user's domain in one file write. `keys` names them in the warning of a failure.
  void changeUser(std::string_view keys, const std::function<void(PlistDict&)>& change);

 private:
  struct Loaded;
  // Both domains at one moment, for values that belong together.
  struct Look {
    DomainSnapshot managed;
    DomainSnapshot user;
  };
  [[nodiscard]] Look look() const { return {.managed = domains_.managed(), .user = domains_.user()}; }
  [[nodiscard]] EffectiveValue find(std::string_view key) const { return find(key, look()); }
  [[nodiscard]] EffectiveValue find(std::string_view key, const Look& look) const;
  template <PreferenceValue T>
  [[nodiscard]] std::optional<T> valueOf(std::string_view key, const Look& look) const;
  [[nodiscard]] std::shared_ptr<const Loaded> load() const;
  [[nodiscard]] SharedConfiguration configurationOf(const Look& look, const Loaded* before) const;
  // One line for each key in the life of the process.
  void tell(const std::vector<SettingProblem>& problems) const;

  PreferenceDomains& domains_;
  NotificationCenter& notifications_;
  Logger log_;
  mutable std::mutex mutex_;
  mutable std::shared_ptr<const Loaded> loaded_;
  mutable std::set<std::string, std::less<>> told_;
};

}  // namespace corvane
