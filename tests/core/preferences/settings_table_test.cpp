#include "core/preferences/settings_table.h"
#include "core/preferences/setting_values.h"
#include "support/committed_document.h"
#include "support/test.h"

namespace corvane {
namespace {

TEST(SettingsTable, EveryKeyStandsOnceWithAMeaning) {
  std::set<std::string_view> keys;
  for (const auto& setting : kSettings) {
    EXPECT_TRUE(keys.insert(setting.key).second) << setting.key;
    EXPECT_TRUE(setting.meaning.ends_with('.')) << setting.key;
    const bool dictionary = setting.type == SettingType::dictionary;
    EXPECT_EQ(dictionary || setting.type == SettingType::enumeration, setting.choices != nullptr) << setting.key;
    EXPECT_EQ(dictionary, setting.entries != nullptr) << setting.key;
    EXPECT_TRUE(setting.formerNameOf.empty() || findSetting(setting.formerNameOf) != nullptr) << setting.key;
  }
}

TEST(SettingsTable, DefaultsPassTheirOwnChecks) {
  for (const auto& setting : kSettings) {
    PlistValue value;
    if (const auto* number = std::get_if<std::int64_t>(&setting.fallback)) value = *number;
    if (const auto* text = std::get_if<std::string_view>(&setting.fallback)) value = *text;
    if (const auto* flag = std::get_if<bool>(&setting.fallback)) value = *flag;
    if (value == PlistValue()) continue;
    EXPECT_EQ(canonical(setting, value), value) << setting.key;
  }
}

// All but these fill a field of the configuration, or are state.
TEST(SettingsTable, NoSettingIsForgottenInTheConfiguration) {
  const std::string noFields =
      " AppIgnoredLabels MonthlyPatchingCadenceStartTime AppSelfUpdateEnabled LockSettings ManagedSilentLaunchEnabled "
      "ShowMenuBarIcon MenuBarHideQuit MenuBarConcealAdvancedActions MenuBarWakeUpUsesRegularPolicy "
      "DeferralDialogPrimaryButton OpenAtLogin KeepAlive ";
  for (const auto& setting : kSettings) {
    const bool field = setting.access != SettingAccess::state &&
                       noFields.find(" " + std::string(setting.key) + " ") == std::string::npos;
    EXPECT_EQ(fillsField(setting.key), field) << setting.key;
  }
}

TEST(SettingsTable, SecretsAreMarked) {
  std::set<std::string_view> neverLogged;
  std::set<std::string_view> redacted;
  for (const auto& setting : kSettings) {
    if (setting.neverLogged) neverLogged.insert(setting.key);
    if (setting.redacted) redacted.insert(setting.key);
  }
  EXPECT_EQ(neverLogged, (std::set<std::string_view>{"GitHubAPIToken", "WebhookURLSlack", "WebhookURLTeams"}));
  EXPECT_EQ(redacted, (std::set<std::string_view>{"WebhookURLSlack", "WebhookURLTeams"}));
}

TEST(SettingsTable, NumbersAtTheirLimitsPassAndOnePastDoesNot) {
  for (const auto& setting : kSettings) {
    if (!setting.range.limited()) continue;
    if (setting.type == SettingType::integerList) {
      const auto [least, most] = setting.range;
      EXPECT_EQ(canonical(setting, PlistArray{least - 1, least, most, most + 1}), PlistValue(PlistArray{least, most}));
      continue;
    }
    EXPECT_TRUE(canonical(setting, setting.range.least) && canonical(setting, setting.range.most)) << setting.key;
    EXPECT_FALSE(canonical(setting, setting.range.least - 1)) << setting.key;
    EXPECT_FALSE(canonical(setting, setting.range.most + 1)) << setting.key;
  }
}

TEST(PreferencesDocument, TheOnesThatAreCommittedAreMadeFromTheTable) {
  expectCommitted("docs/preferences.md", preferencesDocument());
  expectCommitted("docs/preferences.schema.json", preferencesSchema());
  expectCommitted("docs/org.corvane.Corvane.manifest.plist", preferencesManifest());
}

}  // namespace
}  // namespace corvane
