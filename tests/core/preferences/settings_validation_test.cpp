// What is found in profiles, and what is not.
#include "core/preferences/settings_validation.h"

#include "base/plist.h"
#include "core/preferences/configuration_profile.h"
#include "core/preferences/nearest_name.h"
#include "core/preferences/settings_table.h"
#include "support/test.h"

namespace corvane {
namespace {

// "error Key" and "warning Key", a line each.
std::string told(const SettingFindings& findings) {
  std::string text;
  for (const auto& finding : findings)
    text += (text.empty() ? "" : "; ") +
            std::string(finding.severity == SettingFinding::Severity::error ? "error " : "warning ") + finding.key;
  return text;
}

PlistDict listOf(const std::string& inner) {
  const auto list = parsePlist("<plist version=\"1.0\"><dict>" + inner + "</dict></plist>");
  if (list && list->root.dict()) return *list->root.dict();
  ADD_FAILURE() << inner;
  return {};
}

std::string entry(const std::string& key, const std::string& value) { return "<key>" + key + "</key>" + value; }
std::string integer(const std::string& key, int value) {
  return entry(key, "<integer>" + std::to_string(value) + "</integer>");
}
std::string text(const std::string& key, const std::string& value) {
  return entry(key, "<string>" + value + "</string>");
}
std::string on(const std::string& key) { return entry(key, "<true/>"); }
std::string list(const std::string& key, std::initializer_list<const char*> items) {
  std::string inner;
  for (const auto* item : items) inner += "<string>" + std::string(item) + "</string>";
  return entry(key, "<array>" + inner + "</array>");
}

TEST(SettingsValidation, AProfileWithEveryKeyWrongNamesEachKeyOnce) {
  PlistDict wrong;
  std::size_t keys = 0;
  for (const auto& setting : kSettings) {
    wrong[std::string(setting.key)] = PlistData{"x"};
    if (setting.type == SettingType::data) wrong[std::string(setting.key)] = 7;
    ++keys;
  }
  std::set<std::string> named;
  const auto findings = validateSettings(wrong);
  for (const auto& finding : findings) {
    EXPECT_TRUE(named.insert(finding.key).second) << finding.key;
    EXPECT_EQ(finding.severity, SettingFinding::Severity::error) << finding.key;
    EXPECT_FALSE(finding.reason.empty() || finding.fix.empty()) << finding.key;
  }
  EXPECT_EQ(named.size(), keys);
}

TEST(SettingsValidation, TheDefaultsThemselvesHaveNoError) {
  PlistDict defaults;
  for (const auto& setting : kSettings) {
    if (!setting.manageable()) continue;
    if (const auto* flag = std::get_if<bool>(&setting.fallback)) defaults[std::string(setting.key)] = *flag;
    if (const auto* number = std::get_if<std::int64_t>(&setting.fallback)) defaults[std::string(setting.key)] = *number;
    if (const auto* word = std::get_if<std::string_view>(&setting.fallback)) defaults[std::string(setting.key)] = *word;
  }
  for (const auto& finding : validateSettings(defaults))
    EXPECT_EQ(finding.severity, SettingFinding::Severity::warning) << finding.key << ": " << finding.reason;
}

TEST(SettingsValidation, JudgesKeysByThemselves) {
  const std::pair<std::string, const char*> rows[] = {
      {integer("DeferralTimerDefault", 1), ""},
      {integer("DeferralTimerDefault", 0), "error DeferralTimerDefault"},
      {text("DeferralTimerDefault", "60"), "error DeferralTimerDefault"},
      {entry("VerboseMode", "<integer>1</integer>"), "error VerboseMode"},
      {entry("OpenAtLogin", "<integer>1</integer>"), ""},
      {text("SelfUpdateFrequency", "hourly") + on("SelfUpdateEnabled"), "error SelfUpdateFrequency"},
      {text("SelfUpdateFrequency", "DAILY") + on("SelfUpdateEnabled"), ""},
      {text("PatchingEndTime", "25:00") + on("AggressivePatchDayDeferral"),
       "error PatchingEndTime; warning AggressivePatchDayDeferral"},
      {entry("NextAutoLaunch", "<date>2026-01-01T00:00:00Z</date>"), "error NextAutoLaunch"},
      {on("FirstRunSetupCompleted"), ""},
      {list("AppIgnoredLabels", {"quill"}), "warning AppIgnoredLabels"},
      {list("IgnoredLabels", {"quill*", "tern"}), ""},
      {list("IgnoredLabels", {"quill,tern"}), "error IgnoredLabels"},
      {entry("RequiredLabels", "<array><integer>7</integer></array>"), "error RequiredLabels"},
      {list("BackgroundPatchClosedAppsAllowList", {"quill*"}) + on("BackgroundPatchClosedAppsEnabled"),
       "error BackgroundPatchClosedAppsAllowList"},
      {list("IgnoreFilePaths", {"/Applications/"}), "error IgnoreFilePaths"},
      {list("IgnoreFilePaths", {"/Applications/Old/"}), ""},
      {text("SupportTeamWebsite", "www.example.org"), "error SupportTeamWebsite"},
      {text("SupportTeamEmail", "help at example"), "warning SupportTeamEmail"},
      {text("WebhookURLSlack", "http://chat.example/x") + text("WebhookFeature", "all"), "error WebhookURLSlack"},
      {text("WebhookURLSlack", ""), "warning WebhookURLSlack"},
      {text("GitHubAPIToken", "ab\ncd") + on("GitHubAPIAuthEnabled"), "error GitHubAPIToken"},
      {entry("DeferralTimerMenu", "<array><integer>0</integer><integer>60</integer></array>"),
       "error DeferralTimerMenu"},
      {entry("NotificationPolicy", "<dict>" + text("updatesAvailable", "persistent") + "</dict>"), ""},
      {entry("NotificationPolicy", "<dict>" + text("updatesAvailable", "loud") + "</dict>"),
       "error NotificationPolicy"},
      {text("InstallomatorOptions", "NOTIFY=silent LOGO=/a/b PROXY=p:1 REOPEN=No"), ""},
      {text("InstallomatorOptions", "NOTIFY=loud"), "error InstallomatorOptions"},
      {text("InstallomatorOptions", "NOTFIY=silent"), "error InstallomatorOptions"},
      {text("InstallomatorOptions", "IGNORE_DND_APPS=One Two"), "error InstallomatorOptions"},
      {text("InstallomatorOptions", "LOGGING=DEBUG"), "warning InstallomatorOptions"},
      {text("InstallomatorOptions", "PROMPT_TIMEOUT=1+1"), "error InstallomatorOptions"},
  };
  for (const auto& [settings, expected] : rows)
    EXPECT_EQ(told(validateSettings(listOf(settings))), expected) << settings;
}

TEST(SettingsValidation, JudgesKeysTogether) {
  const auto hours = [](const char* start, const char* end) {
    return text("BusinessHoursStartTime", start) + text("BusinessHoursEndTime", end);
  };
  const auto pass = on("BackgroundPatchClosedAppsEnabled");
  const auto allowed = list("BackgroundPatchClosedAppsAllowList", {"quill", "tern"});
  const std::pair<std::string, const char*> rows[] = {
      {integer("DeadlineDaysHard", 0), "error DeadlineDaysHard"},
      {integer("DeadlineCountHard", 0), "warning DeadlineCountHard"},
      {integer("DeadlineDaysHard", 3), ""},
      {integer("DeadlineDaysHard", 3) + text("DiscoveryFrequency", "weekly"), "warning DeadlineDaysHard"},
      {integer("DeadlineDaysHard", 3) + text("DiscoveryFrequency", "off"), "warning DiscoveryFrequency"},
      {integer("DeadlineDaysHard", 8), "warning DeadlineDaysHard"},
      {integer("DeadlineDaysHard", 8) + integer("DaysUntilReset", 14), ""},
      {integer("DeadlineDaysHard", 2) + integer("DeadlineDaysFocus", 3), "warning DeadlineDaysFocus"},
      {integer("DeadlineDaysHard", 1) + integer("DeferralTimerDefault", 1440), "error DeferralTimerDefault"},
      {integer("DeadlineDaysHard", 1) + integer("DeferralTimerDefault", 1439), ""},
      {integer("DeadlineDaysFocus", 1) + integer("DeferralTimerFocus", 2000), "error DeferralTimerFocus"},
      {integer("DeadlineDaysHard", 1) +
           entry("DeferralTimerMenu", "<array><integer>60</integer><integer>1440</integer></array>"),
       "warning DeferralTimerMenu"},
      {integer("DeadlineDaysHard", 1) + entry("DeferralTimerMenu", "<array><integer>1440</integer></array>"),
       "error DeferralTimerMenu"},
      {hours("09:00", "17:00"), ""},
      {hours("22:00", "06:00"), ""},
      {hours("09:00", "9:00"), "error BusinessHoursEndTime"},
      {hours("00:00", "23:59"), "error BusinessHoursEndTime"},
      {hours("08:00", "06:00"), "warning BusinessHoursEndTime"},
      {text("BusinessHoursStartTime", "09:00"), "error BusinessHoursStartTime"},
      {hours("09:00", "17:00") + text("PatchingEndTime", "16:00") + on("AggressivePatchDayDeferral") +
           integer("DeadlineDaysHard", 3),
       "warning PatchingEndTime"},
      {text("PatchingEndTime", "18:00"), "warning PatchingEndTime"},
      {on("AggressivePatchDayDeferral") + integer("DeadlineDaysHard", 3), "error AggressivePatchDayDeferral"},
      {text("MonthlyPatchingCadenceOrdinalValue", "third"), "warning MonthlyPatchingCadenceOrdinalValue"},
      {text("MonthlyPatchingCadenceOrdinalValue", "third") + on("MonthlyPatchingCadenceEnabled"), ""},
      {on("MonthlyPatchingCadenceEnabled") + integer("PatchWeekStartDay", 3), "warning PatchWeekStartDay"},
      {integer("DaysUntilReset", 10), "warning DaysUntilReset"},
      {allowed + pass, ""},
      {allowed + list("BackgroundPatchClosedAppsBlockList", {"tern"}) + pass,
       "warning BackgroundPatchClosedAppsBlockList"},
      {allowed + list("BackgroundPatchClosedAppsBlockList", {"tern", "quill", "x"}) + pass,
       "error BackgroundPatchClosedAppsBlockList"},
      {on("BackgroundPatchAtLogin"), "error BackgroundPatchAtLogin"},
      {on("BackgroundPatchAtLogin") + pass, ""},
      {on("BackgroundPatchAtLogin") + pass + text("BackgroundPatchClosedAppsScheduler", "helperDaemon"),
       "error BackgroundPatchAtLogin"},
      {integer("BackgroundPatchClosedAppsIntervalHours", 8), "warning BackgroundPatchClosedAppsIntervalHours"},
      {text("WebhookFeature", "all"), "error WebhookFeature"},
      {text("WebhookURLTeams", "https://chat.example/x"), "warning WebhookURLTeams"},
      {text("InstallomatorVersion", "custom"), "error InstallomatorVersion"},
      {text("InstallomatorVersion", "custom") + text("InstallomatorCustomPath", "/opt/tool"), ""},
      {on("GitHubAPIAuthEnabled"), "error GitHubAPIAuthEnabled"},
      {list("IgnoredLabels", {"*"}), "error IgnoredLabels"},
      {list("IgnoredLabels", {"*"}) + list("OptionalLabels", {"quill"}), ""},
      {on("SelfUpdateEnabled") + text("SelfUpdateFrequency", "daily"), ""},
      {text("SelfUpdateFrequency", "daily"), "warning SelfUpdateFrequency"},
  };
  for (const auto& [settings, expected] : rows)
    EXPECT_EQ(told(validateSettings(listOf(settings))), expected) << settings;
}

TEST(SettingsValidation, AsksTheCatalogueWhereThereIsOne) {
  const auto settings = listOf(list("RequiredLabels", {"quill", "gone"}));
  EXPECT_EQ(told(validateSettings(settings, [](std::string_view name) { return name == "quill"; })),
            "warning RequiredLabels");
}

TEST(SettingsValidation, NamesTheNearestKeyAndNeverAValueThatMayBeSecret) {
  const std::pair<const char*, const char*> rows[] = {{"DeferalTimerDefault", "DeferralTimerDefault"},
                                                      {"githubapitoken", "GitHubAPIToken"},
                                                      {"DeadlineDayHards", "DeadlineDaysHard"},
                                                      {"SomethingElseAltogether", "docs/preferences.md"}};
  for (const auto& [key, nearest] : rows) {
    const auto findings = validateSettings(PlistDict{{key, "s3cret"}});
    ASSERT_EQ(told(findings), std::string("error ") + key);
    EXPECT_NE(findings[0].fix.find(nearest), std::string::npos) << findings[0].fix;
  }
  for (const auto& setting : kSettings) {
    if (!setting.neverLogged) continue;
    for (const PlistValue& value : {PlistValue("s3cret\nword"), PlistValue(PlistArray{"s3cret"})})
      for (const auto& finding : validateSettings(PlistDict{{std::string(setting.key), value}}))
        EXPECT_EQ((finding.reason + finding.fix).find("s3cret"), std::string::npos) << finding.reason;
  }
  EXPECT_EQ(shown("a\x1b[31m\n\xff"), "a\uFFFD[31m\uFFFD\uFFFD");
  EXPECT_EQ(shown(std::string(200, 'x')).size(), 60 + std::string_view("…").size());
}

TEST(ConfigurationProfile, FindsOurSettingsWhereverTheyStand) {
  const auto payloads = [](const std::string& inner) {
    return text("PayloadType", "Configuration") + entry("PayloadContent", "<array>" + inner + "</array>");
  };
  const auto direct = [](const std::string& inner) {
    return "<dict>" + text("PayloadType", "org.corvane.Corvane") + integer("PayloadVersion", 1) + inner + "</dict>";
  };
  const auto client = [](const std::string& domain, const std::string& way, const std::string& inner) {
    return "<dict>" + text("PayloadType", "com.apple.ManagedClient.preferences") +
           entry("PayloadContent",
                 "<dict>" +
                     entry(domain, "<dict>" + entry(way, "<array><dict>" + inner + "</dict></array>") + "</dict>") +
                     "</dict>") +
           "</dict>";
  };
  const auto mcx = [](const std::string& inner) {
    return entry("mcx_preference_settings", "<dict>" + inner + "</dict>");
  };
  const auto verbose = on("VerboseMode");
  const std::pair<std::string, const char*> rows[] = {
      {verbose, "VerboseMode"},
      {payloads(direct(verbose)), "VerboseMode"},
      {payloads(client("org.corvane.Corvane", "Forced", mcx(verbose))), "VerboseMode"},
      {payloads(direct(verbose) + direct(verbose + on("DebugMode"))), "DebugMode VerboseMode"},
      {payloads(direct(verbose) + direct(entry("VerboseMode", "<false/>"))), "VerboseMode, error VerboseMode"},
      {payloads(client("org.corvane.Corvane", "Set-Once", mcx(verbose))), ", error Set-Once"},
      {payloads(client("org.example", "Forced", mcx(verbose))),
       "The profile sets nothing in org.corvane.Corvane. Its first payload is for \"org.example\". Give a payload the "
       "PayloadType org.corvane.Corvane."},
      {payloads(""),
       "The profile sets nothing in org.corvane.Corvane. Give a payload the PayloadType "
       "org.corvane.Corvane."},
      {text("PayloadType", "Configuration"), "The profile has no list of payloads, PayloadContent."},
      {entry("EncryptedPayloadContent", "<data></data>"),
       "The profile's content is encrypted. Check it before it is encrypted."},
  };
  for (const auto& [list, expected] : rows) {
    const auto found = profileSettings(listOf(list));
    std::string outcome;
    if (found) {
      for (const auto& [key, value] : found->settings) outcome += (outcome.empty() ? "" : " ") + key;
      if (!found->findings.empty()) outcome += ", " + told(found->findings);
    } else {
      outcome = found.error().text;
    }
    EXPECT_EQ(outcome, expected) << list;
  }
  EXPECT_FALSE(profileSettings(PlistArray{}));
}

}  // namespace
}  // namespace corvane
