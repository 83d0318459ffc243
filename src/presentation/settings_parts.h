// From the models of the settings to the page. Pure; a file a tab.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "presentation/page_texts.h"
#include "presentation/settings_page.h"
#include "settings/about_settings.h"
#include "settings/admin_test_mode.h"
#include "settings/settings_view_model.h"

namespace corvane {

// Tabs in their order.
struct SettingsTabKeys {
  static constexpr std::string_view installomator = "installomator";
  static constexpr std::string_view deferrals = "deferrals";
  static constexpr std::string_view advanced = "advanced";
  static constexpr std::string_view about = "about";
};

// Keys of controls that are no settings and no options.
struct SettingsKeys {
  static constexpr std::string_view advancedOptions = "showAdvancedOptions";
  static constexpr std::string_view businessHours = "BusinessHours";
  static constexpr std::string_view menuBarIcon = "ShowMenuBarIcon";
  static constexpr std::string_view openAtLogin = "OpenAtLogin";
  static constexpr std::string_view keepAlive = "KeepAlive";
  static constexpr std::string_view loginItems = "openLoginItems";
  static constexpr std::string_view resetHelper = "resetHelper";
  static constexpr std::string_view generateBundle = "generateBundle";
  static constexpr std::string_view revealBundle = "revealBundle";
  // Of the admin test mode.
  static constexpr std::string_view updateAll = "triggerUpdateAll";
  static constexpr std::string_view hardPrompt = "triggerHardDeadlinePrompt";
  static constexpr std::string_view testNotification = "postTestNotification";
  static constexpr std::string_view resetDeferrals = "resetDeferralState";
  static constexpr std::string_view nextLaunch = "nextLaunchOverride";
  static constexpr std::string_view applyNextLaunch = "applyNextLaunch";
  static constexpr std::string_view focusCount = "FocusDeferralCount";
  static constexpr std::string_view hardCount = "HardDeferralCount";
  static constexpr std::string_view anchor = "anchorOverride";
  static constexpr std::string_view applyAnchor = "applyAnchor";
  static constexpr std::string_view configuredCadence = "useConfiguredCadence";
};

// What the window remembers of itself.
struct SettingsWindowState {
  std::string selectedTab{SettingsTabKeys::installomator};
  bool showsAdvancedOptions = false;
  std::set<std::string, std::less<>> revealed;
  // Texts as they were typed, until the save puts them in order: what is typed is never changed under the cursor.
  std::map<std::string, std::string, std::less<>> drafts;
};

struct SettingsPageInput {
  const SettingsViewModel& model;
  const AboutState& about;
  const AdminTestState* admin;  // null while the mode is off
  const SettingsWindowState& window;
  const Locale& locale;
  const AppDisplayTitle& title;
  bool canRevealFiles;
};

[[nodiscard]] SettingsPage makeSettingsPage(const SettingsPageInput& input);

// A stepper's values: their range, the way from one to the next, and their unit.
struct StepperRule {
  enum class Unit { seconds, minutes, hours, days, deferrals, none };
  std::string_view key;
  SettingRange range;
  std::int64_t step = 1;
  Unit unit = Unit::none;
  bool hasOffState = false;
};
// Null when the key is no stepper's.
[[nodiscard]] const StepperRule* findStepper(std::string_view key);
// A value outside the range stays until it is stepped towards it, and is at its end then.
[[nodiscard]] std::int64_t stepped(const StepperRule& rule, std::int64_t value, std::int64_t steps);

// "yyyy-MM-dd HH:mm" in the user's zone, and back; absent when it is no such date.
[[nodiscard]] std::string dateFieldText(Date date, const Calendar& calendar);
[[nodiscard]] std::optional<Date> dateFromField(std::string_view text, const Calendar& calendar);

// What is wrong with a field as it stands, localised; empty when nothing is.
[[nodiscard]] std::string settingProblem(const SettingsViewModel& model, std::string_view key);

// Puts sections together. Who decides about a control follows from its key.
class SettingsForm {
 public:
  explicit SettingsForm(const SettingsPageInput& input) : in(input), texts_(input.title) {}

  const SettingsPageInput& in;

  [[nodiscard]] std::string localized(std::string_view literal) const { return texts_.localized(literal); }
  [[nodiscard]] const PageTexts& texts() const { return texts_; }

  void section(std::string_view key, std::string title, std::string warning = {});
  // Each appends to the last section; texts are localised. Of a setting or an option:
  SettingsControl& toggle(std::string_view key, std::string label, std::string help = {});
  SettingsControl& picker(std::string_view key, std::string label, std::vector<ControlChoice> choices,
                          std::string help = {});
  template <class E>
  SettingsControl& picker(std::string_view key, std::string label, std::string help = {}) {
    std::vector<ControlChoice> choices;
    for (const auto& entry : CaseNames<E>::all)
      choices.push_back({std::string(entry.raw), corvane::localized(entry.display)});
    return picker(key, std::move(label), std::move(choices), std::move(help));
  }
  SettingsControl& stepper(std::string_view key, std::string label, std::string help = {});
  SettingsControl& field(ControlKind kind, std::string_view key, std::string label, std::string prompt = {},
                         std::string help = {});
  // Of neither: nobody decides about it but the caller.
  SettingsControl& control(ControlKind kind, std::string_view key, std::string label, std::string value = {},
                           std::string help = {});
  SettingsControl& note(std::string_view key, std::string help) {
    return control(ControlKind::note, key, {}, {}, help);
  }
  SettingsControl& button(std::string_view key, std::string label, bool enabled = true, std::string help = {});
  // Shows that the organisation decides, and takes the control away.
  void lock(SettingsControl& control) const;

  [[nodiscard]] std::vector<SettingsSection> take() { return std::move(sections_); }

 private:
  SettingsControl& add(ControlKind kind, std::string_view key, std::string label, std::string help);

  PageTexts texts_;
  std::vector<SettingsSection> sections_;
};

void addInstallomatorTab(SettingsForm& form);
void addDeferralsTab(SettingsForm& form);
void addAdminTestMode(SettingsForm& form);
void addAdvancedTab(SettingsForm& form);
void addAboutTab(SettingsForm& form);

}  // namespace corvane
