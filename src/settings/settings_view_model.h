// The model behind the settings window: a working copy of the settings that the tabs edit, what the organisation has
// decided of them, and the save. Nothing is written before it; unsaved edits die with the model.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/date.h"
#include "base/notification_center.h"
#include "core/logging/logging_service.h"
#include "core/preferences/options_codec.h"
#include "core/preferences/preference_manager.h"
#include "core/records/usage_signals.h"
#include "platform/clock.h"

namespace corvane {

// Which groups of controls the organisation has taken over, as it was when the window opened.
struct ManagedFlags {
  bool isInstallomatorManaged = false;
  bool isGitHubAPIManaged = false;
  bool isInstallomatorAssemblyManaged = false;
  bool isSupportInfoManaged = false;
  bool isDeferralSettingsManaged = false;
  bool isLabelsManaged = false;
  bool isWebhooksManaged = false;
  bool isDebugSettingsManaged = false;
  bool isHelperBehaviorManaged = false;
  bool isBackgroundPatchManaged = false;
  bool isSelfUpdateManaged = false;
  bool isDiscoveryFiltersManaged = false;
  bool isVersionComparisonManaged = false;
  bool isUpdateAllErrorPolicyManaged = false;
  bool isBusinessHoursManaged = false;
  bool isSettingsLocked = false;

  // With the window locked every group counts as managed, but the support team's, which is only shown.
  [[nodiscard]] static ManagedFlags of(const PreferenceManager& preferences);
  [[nodiscard]] bool isManaged(ManagedGroup group) const;
  friend bool operator==(const ManagedFlags&, const ManagedFlags&) = default;
};

// What of the support team is shown: trimmed; absent when it is empty, says "hide", or is a profile's placeholder.
struct SupportInfo {
  std::optional<std::string> name;
  std::optional<std::string> phone;
  std::optional<std::string> email;
  std::optional<std::string> website;

  [[nodiscard]] static SupportInfo of(const CorvaneConfiguration& config);
  [[nodiscard]] bool hasAny() const { return name || phone || email || website; }
};

// Main thread.
class SettingsViewModel {
 public:
  static constexpr std::string_view kDefaultBusinessHoursStart = "09:00";
  static constexpr std::string_view kDefaultBusinessHoursEnd = "17:00";

  // All outlive the model.
  struct Services {
    PreferenceManager& preferences;
    NotificationCenter& notifications;
    TelemetrySwitch& telemetry;
    const Clock& clock;
    LogSink& log;
  };
  explicit SettingsViewModel(Services services);

  // The working copy. The options string of `config` is composed of `options` by the save.
  CorvaneConfiguration config;
  InstallomatorOptions options;

  [[nodiscard]] std::optional<Date> lastSavedAt() const { return lastSavedAt_; }
  [[nodiscard]] const ManagedFlags& flags() const { return flags_; }
  [[nodiscard]] bool isSettingsLocked() const { return flags_.isSettingsLocked; }
  [[nodiscard]] bool hasManagedSettings() const;
  [[nodiscard]] bool hasSupportInfo() const { return SupportInfo::of(config).hasAny(); }
  // By a profile that sets this key, or by the locked window. For the controls of keys without a group.
  [[nodiscard]] bool isManaged(std::string_view key) const;
  // There is something to save.
  [[nodiscard]] bool hasEdits() const;

  // A control's value by its key: one of the settings table, or of the options ("NOTIFY"; the path of a custom logo
  // is kLogoPath). No value for a limit that is off, an absent text, and an unknown key.
  static constexpr std::string_view kLogoPath = "LOGO_PATH";
  [[nodiscard]] static bool isOption(std::string_view key);
  [[nodiscard]] PlistValue value(std::string_view key) const;
  // A value of another type and an unknown key change nothing.
  void setValue(std::string_view key, const PlistValue& value);
  // A text as it was typed: lists are taken apart at white space, paths at line ends, and line breaks that came with
  // a pasted text are left out of all else. Gives the text as its field goes on showing it.
  std::string setText(std::string_view key, std::string_view typed);
  // A list's items, with blanks or line ends between them.
  [[nodiscard]] std::string text(std::string_view key) const;

  // Both times are set. Switched on for the first time they are the defaults, after that what they were.
  [[nodiscard]] bool holdsBusinessHours() const;
  void holdBusinessHours(bool hold);

  // Writes every key of the save order, managed or not, to the user's domain; what is managed takes effect when the
  // management ends. Then posts CorvaneSettingsDidChange, also when nothing differs. Nothing at all while locked.
  void save();
  // The options string, also stored in `config`.
  std::string composeInstallomatorOptions();
  void parseInstallomatorOptions();

 private:
  void followTelemetry();
  void logSave() const;

  Services s_;
  ManagedFlags flags_;
  CorvaneConfiguration savedConfig_;
  InstallomatorOptions savedOptions_;
  std::optional<Date> lastSavedAt_;
  std::optional<std::string> formerStart_;
  std::optional<std::string> formerEnd_;
};

}  // namespace corvane
