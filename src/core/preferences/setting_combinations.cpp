// Keys of a profile that are fine each, and not together.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>

#include "base/ascii.h"
#include "base/time_of_day.h"
#include "core/preferences/configuration.h"
#include "core/preferences/setting_values.h"
#include "core/preferences/settings_validation.h"

namespace corvane {
namespace {

using Severity = SettingFinding::Severity;
using Config = CorvaneConfiguration;
constexpr auto error = Severity::error;
constexpr auto warning = Severity::warning;

constexpr int kMinutesOfADay = 24 * 60;
constexpr int kLongBusinessDay = 20 * 60;  // minutes; what is left is night, when Macs sleep
constexpr std::int64_t kDaysOfAWeek = 7;
constexpr std::int64_t kLongestMonthlyCycle = 35;  // days
constexpr std::int64_t kTimeToRead = 30;           // seconds

// A profile of which a value that is no good stands as an empty one.
class Profile {
 public:
  explicit Profile(const PlistDict& managed)
      : managed_(managed), config_(configurationFrom({.managed = managed, .user = PlistDict()}).config) {}

  [[nodiscard]] const Config& config() const { return config_; }
  // It is set, to something that counts.
  [[nodiscard]] bool gives(std::string_view key) const {
    const auto found = managed_.find(key);
    return found != managed_.end() && canonical(*findSetting(key), found->second);
  }
  // It is not set to what does not count, which was told already.
  [[nodiscard]] bool isWell(std::string_view key) const { return key.empty() || !managed_.contains(key) || gives(key); }
  [[nodiscard]] bool flag(std::string_view key) const {
    const auto found = managed_.find(key);
    const auto value = found == managed_.end() ? std::nullopt : canonical(*findSetting(key), found->second);
    return value && value->boolean().value_or(false);
  }

 private:
  const PlistDict& managed_;
  Config config_;
};

bool isBlank(std::string_view text) { return trimmed(text).empty(); }
bool hasHardDeadline(const Config& config) { return config.deadlineCountHard || config.deadlineDaysHard; }
bool inApp(const Config& config) {
  return config.backgroundPatchClosedAppsScheduler == BackgroundPatchSchedulerMode::inApp;
}
bool holds(const std::vector<std::string>& list, std::string_view text) {
  return std::ranges::any_of(list, [&](const std::string& item) { return equalIgnoringCase(item, text); });
}

// One sentence for each row: a key that is set, those that it needs, and when they do not fit.
struct Rule {
  Severity severity;
  std::string_view key;
  std::array<std::string_view, 2> with;
  bool (*broken)(const Config&, const Profile&);
  std::string_view reason;
  std::string_view fix;
};

using C = const Config&;
using P = const Profile&;
bool noPass(C c, P) { return !c.backgroundPatchClosedAppsEnabled; }
bool weekly(C c, P) { return !c.monthlyPatchingCadenceEnabled; }
bool monthly(C c, P) { return c.monthlyPatchingCadenceEnabled; }
bool noFeature(C c, P) { return c.webhookFeature == WebhookFeature::off; }
bool noSelfUpdate(C c, P) { return !c.selfUpdateEnabled; }

constexpr std::string_view kPass = "BackgroundPatchClosedAppsEnabled";
constexpr std::string_view kNoPass = "Closed applications are not updated in the background, so it has no effect.";
constexpr std::string_view kSetPass = "Set BackgroundPatchClosedAppsEnabled, or take the key out.";
constexpr std::string_view kMonthly = "MonthlyPatchingCadenceEnabled";
constexpr std::string_view kNotMonthly = "The cadence is weekly, so it has no effect.";
constexpr std::string_view kSetMonthly = "Set MonthlyPatchingCadenceEnabled, or take the key out.";
constexpr std::string_view kNotWeekly = "The cadence is monthly, so it has no effect.";
constexpr std::string_view kUnsetMonthly = "Take it out, or MonthlyPatchingCadenceEnabled.";
constexpr std::string_view kNoSelfUpdate = "Corvane does not update itself, so it has no effect.";
constexpr std::string_view kSetSelfUpdate = "Set SelfUpdateEnabled, or take the key out.";
constexpr std::string_view kNoFeature = "WebhookFeature is off, so nothing is sent there.";
constexpr std::string_view kSetFeature = "Set WebhookFeature to failures or all.";
constexpr std::string_view kNoDeadline = "There is no hard deadline, so it has no effect.";
constexpr std::string_view kSetDeadline = "Set DeadlineDaysHard or DeadlineCountHard, or take the key out.";
constexpr std::string_view kHalfHours = "Business hours need both times; with one alone there are none.";

constexpr auto kRules = std::to_array<Rule>({
    {error,
     "GitHubAPIAuthEnabled",
     {"GitHubAPIToken"},
     [](C c, P) { return c.githubAPIAuthEnabled && isBlank(c.githubAPIToken); },
     "There is no token to authenticate with.",
     "Set GitHubAPIToken."},
    {warning,
     "GitHubAPIToken",
     {"GitHubAPIAuthEnabled"},
     [](C c, P) { return !c.githubAPIAuthEnabled; },
     "It is not used while GitHubAPIAuthEnabled is off.",
     "Set GitHubAPIAuthEnabled."},
    {error,
     "InstallomatorVersion",
     {"InstallomatorCustomPath"},
     [](C c, P) {
       return c.installomatorVersion == InstallomatorVersion::custom && isBlank(c.installomatorCustomPath);
     },
     "The custom version has no place to come from.",
     "Set InstallomatorCustomPath."},
    {warning,
     "InstallomatorCustomPath",
     {"InstallomatorVersion"},
     [](C c, P) { return c.installomatorVersion != InstallomatorVersion::custom; },
     "It is read for the custom version only.",
     "Set InstallomatorVersion to custom."},
    {error,
     "WebhookFeature",
     {"WebhookURLSlack", "WebhookURLTeams"},
     [](C c, P) { return c.webhookFeature != WebhookFeature::off && !c.webhookURLSlack && !c.webhookURLTeams; },
     "There is no address to send results to.",
     "Set WebhookURLSlack or WebhookURLTeams."},
    {warning, "WebhookURLSlack", {"WebhookFeature"}, noFeature, kNoFeature, kSetFeature},
    {warning, "WebhookURLTeams", {"WebhookFeature"}, noFeature, kNoFeature, kSetFeature},
    {error,
     "BusinessHoursStartTime",
     {"BusinessHoursEndTime"},
     [](C c, P) { return !c.businessHoursEndTime; },
     kHalfHours,
     "Set BusinessHoursEndTime."},
    {error,
     "BusinessHoursEndTime",
     {"BusinessHoursStartTime"},
     [](C c, P) { return !c.businessHoursStartTime; },
     kHalfHours,
     "Set BusinessHoursStartTime."},
    {error,
     "AggressivePatchDayDeferral",
     {"PatchingEndTime"},
     [](C c, P) { return c.aggressivePatchDayDeferral && !c.patchingEndTime; },
     "No time says when patching is to be over, so every wait is offered.",
     "Set PatchingEndTime."},
    {warning,
     "PatchingEndTime",
     {"AggressivePatchDayDeferral"},
     [](C c, P) { return !c.aggressivePatchDayDeferral; },
     "It counts only with AggressivePatchDayDeferral.",
     "Set AggressivePatchDayDeferral, or take the key out."},
    {warning,
     "AggressivePatchDayDeferral",
     {"DeadlineDaysHard", "DeadlineCountHard"},
     [](C c, P) { return c.aggressivePatchDayDeferral && !hasHardDeadline(c); },
     kNoDeadline,
     kSetDeadline},
    {warning,
     "HardDeadlineDialogAllowClose",
     {"DeadlineDaysHard", "DeadlineCountHard"},
     [](C c, P) { return c.hardDeadlineDialogAllowClose && !hasHardDeadline(c); },
     kNoDeadline,
     kSetDeadline},
    {warning, "MonthlyPatchingCadenceOrdinalValue", {kMonthly}, weekly, kNotMonthly, kSetMonthly},
    {warning, "MonthlyPatchingCadenceWeekdayIndex", {kMonthly}, weekly, kNotMonthly, kSetMonthly},
    {warning,
     "MonthlyPatchingCadenceStartTime",
     {},
     [](C, P) { return true; },
     "Cycles start at midnight; all that it does is to lock the deferral settings.",
     "Take the key out."},
    {warning, "DaysUntilReset", {kMonthly}, monthly, kNotWeekly, kUnsetMonthly},
    {warning, "PatchWeekStartDay", {kMonthly}, monthly, kNotWeekly, kUnsetMonthly},
    {warning,
     "DaysUntilReset",
     {kMonthly},
     [](C c, P) { return !c.monthlyPatchingCadenceEnabled && c.daysUntilReset % kDaysOfAWeek != 0; },
     "Cycles of this length do not start on one weekday.",
     "Write 7 for every week, 14 for every other."},
    {error,
     "DeadlineDaysHard",
     {},
     [](C c, P) { return c.deadlineDaysHard == 0; },
     "The deadline is the start of the cycle, before the first prompt can come.",
     "Give it at least 1 day."},
    {warning,
     "DeadlineCountHard",
     {},
     [](C c, P) { return c.deadlineCountHard == 0; },
     "The deadline is reached at the first prompt: nobody can defer.",
     "Give it at least 1 deferral, if that is not meant."},
    {warning,
     "DeadlineDaysFocus",
     {"DeadlineDaysHard"},
     [](C c, P) { return c.deadlineDaysHard && *c.deadlineDaysFocus > *c.deadlineDaysHard; },
     "The hard deadline comes first, so it is never reached.",
     "Make it at most DeadlineDaysHard."},
    {warning,
     "DeadlineCountFocus",
     {"DeadlineCountHard"},
     [](C c, P) { return c.deadlineCountHard && *c.deadlineCountFocus > *c.deadlineCountHard; },
     "Deferrals in Focus count for the hard deadline too, which comes first.",
     "Make it at most DeadlineCountHard."},
    {warning,
     "DiscoveryFrequency",
     {"DeadlineDaysHard", "DeadlineCountHard"},
     [](C c, P) { return c.discoveryFrequency == DiscoveryFrequency::off && hasHardDeadline(c); },
     "Updates are looked for only when somebody asks, so the deadline may pass unseen.",
     "Write daily or weekly."},
    {warning,
     "DeadlineDaysHard",
     {"DiscoveryFrequency"},
     [](C c, P) {
       return c.discoveryFrequency == DiscoveryFrequency::weekly && *c.deadlineDaysHard > 0 &&
              *c.deadlineDaysHard < kDaysOfAWeek;
     },
     "Discovery is weekly, so the deadline may pass before the first prompt.",
     "Set DiscoveryFrequency to daily, or give it at least 7 days."},
    {warning,
     "DialogTimeoutDeferralAction",
     {"DialogTimeoutDeferral"},
     [](C c, P) {
       return c.dialogTimeoutDeferralAction == DeferralAction::continueUpdates && c.dialogTimeoutDeferral < kTimeToRead;
     },
     "The prompt installs by itself before anybody can have read it.",
     "Give DialogTimeoutDeferral at least 30 seconds."},
    {warning,
     "DeferralTimerError",
     {"WorkflowUpdateAllErrorCompletesPatching"},
     [](C c, P) { return c.workflowUpdateAllErrorCompletesPatching; },
     "An Update All with errors completes the cycle, so nothing is tried again.",
     "Take it out, or WorkflowUpdateAllErrorCompletesPatching."},
    {error,
     "BackgroundPatchAtLogin",
     {kPass},
     [](C c, P) { return c.backgroundPatchAtLogin && !c.backgroundPatchClosedAppsEnabled; },
     "Closed applications are not updated in the background, so no pass runs after login either.",
     "Set BackgroundPatchClosedAppsEnabled."},
    {error,
     "BackgroundPatchAtLogin",
     {kPass, "BackgroundPatchClosedAppsScheduler"},
     [](C c, P) { return c.backgroundPatchAtLogin && c.backgroundPatchClosedAppsEnabled && !inApp(c); },
     "The pass after login is the application's, and the helper starts the passes.",
     "Set BackgroundPatchClosedAppsScheduler to inApp, or take the key out."},
    {warning, "BackgroundPatchClosedAppsIntervalHours", {kPass}, noPass, kNoPass, kSetPass},
    {warning, "BackgroundPatchClosedAppsRequireOnAC", {kPass}, noPass, kNoPass, kSetPass},
    {warning, "BackgroundPatchClosedAppsAllowList", {kPass}, noPass, kNoPass, kSetPass},
    {warning, "BackgroundPatchClosedAppsBlockList", {kPass}, noPass, kNoPass, kSetPass},
    {warning, "BackgroundPatchClosedAppsNotifyOnCompletion", {kPass}, noPass, kNoPass, kSetPass},
    {warning, "BackgroundPatchClosedAppsScheduler", {kPass}, noPass, kNoPass, kSetPass},
    {warning, "BackgroundPatchStartupJitterMaxMinutes", {kPass}, noPass, kNoPass, kSetPass},
    {warning,
     "SelfUpdateLabel",
     {"SelfUpdateEnabled", "AppSelfUpdateEnabled"},
     noSelfUpdate,
     kNoSelfUpdate,
     kSetSelfUpdate},
    {warning,
     "SelfUpdateFrequency",
     {"SelfUpdateEnabled", "AppSelfUpdateEnabled"},
     noSelfUpdate,
     kNoSelfUpdate,
     kSetSelfUpdate},
    {warning,
     "TelemetryEndpoint",
     {"TelemetryEnabled"},
     [](C c, P) { return !c.telemetryEnabled; },
     "Usage signals are off, so nothing is sent there.",
     "Take it out, or TelemetryEnabled."},
    {warning,
     "TelemetryEnabled",
     {"TelemetryEndpoint"},
     [](C c, P) { return c.telemetryEnabled && isBlank(c.telemetryEndpoint); },
     "There is no address to send usage signals to, so none are sent.",
     "Set TelemetryEndpoint, or take the key out."},
    {warning,
     "ShowMenuBarIcon",
     {"ManagedSilentLaunchEnabled"},
     [](C, P p) { return !p.flag("ShowMenuBarIcon") && p.flag("ManagedSilentLaunchEnabled"); },
     "With a launch without a window nothing of Corvane is to be seen.",
     "Leave the menu-bar item or the window."},
    {warning,
     "OpenAtLogin",
     {"KeepAlive"},
     [](C, P p) { return !p.flag("OpenAtLogin") && p.flag("KeepAlive"); },
     "KeepAlive starts the application at login all the same.",
     "Take KeepAlive out."},
    {error,
     "IgnoredLabels",
     {"RequiredLabels", "OptionalLabels"},
     [](C c, P) { return holds(c.ignoredLabels, "*") && c.requiredLabels.empty() && c.optionalLabels.empty(); },
     "It ignores every label, and none is required or optional, so nothing is ever updated.",
     "Name labels in RequiredLabels or OptionalLabels, or take the * out."},
    {warning,
     "RequiredLabels",
     {},
     [](C c, P) { return holds(c.requiredLabels, "*"); },
     "It installs every application of the catalogue.",
     "Name the labels that are meant."},
    {warning,
     "OptionalLabels",
     {"IgnoredLabels"},
     [](C c, P) { return holds(c.optionalLabels, "*") && !c.ignoredLabels.empty(); },
     "It beats IgnoredLabels, of which nothing counts.",
     "Take the * out."},
});

void checkRules(const Profile& profile, SettingFindings& findings) {
  for (const auto& rule : kRules) {
    const auto well = [&](std::string_view key) { return profile.isWell(key); };
    if (!profile.gives(rule.key) || !std::ranges::all_of(rule.with, well)) continue;
    if (rule.broken(profile.config(), profile))
      findings.push_back({rule.severity, std::string(rule.key), std::string(rule.reason), std::string(rule.fix)});
  }
}

// Waits that end only behind the deadline.
void checkWaits(const Profile& profile, SettingFindings& findings) {
  const auto& config = profile.config();
  const auto minutes = [](std::optional<std::int64_t> days) {
    return days && *days > 0 ? std::optional(*days * kMinutesOfADay) : std::nullopt;
  };
  const auto check = [&](std::string_view key, std::int64_t wait, std::optional<std::int64_t> deadline,
                         std::string_view deadlineKey) {
    if (!profile.gives(key) || !deadline || wait < *deadline) return false;
    findings.push_back({error, std::string(key),
                        fmt::format("A wait of {} minutes never ends before the deadline of {}, {} minutes into the "
                                    "cycle.",
                                    wait, deadlineKey, *deadline),
                        fmt::format("Make it shorter than {} minutes, or the deadline later.", *deadline)});
    return true;
  };
  const auto hard = minutes(config.deadlineDaysHard);
  check("DeferralTimerDefault", config.deferralTimerDefault, hard, "DeadlineDaysHard");
  if (!check("DeferralTimerFocus", config.deferralTimerFocus, minutes(config.deadlineDaysFocus), "DeadlineDaysFocus"))
    check("DeferralTimerFocus", config.deferralTimerFocus, hard, "DeadlineDaysHard");

  const auto& menu = config.deferralTimerMenu;
  if (!profile.gives("DeferralTimerMenu") || !hard) return;
  const auto tooLong = std::ranges::count_if(menu, [&](std::int64_t wait) { return wait >= *hard; });
  if (tooLong == 0) return;
  const bool all = tooLong == std::ssize(menu);
  findings.push_back({all ? error : warning, "DeferralTimerMenu",
                      fmt::format("{} of its {} waits never end before the deadline of DeadlineDaysHard, {} minutes "
                                  "into the cycle{}.",
                                  tooLong, menu.size(), *hard, all ? ", so nobody can defer" : ""),
                      fmt::format("Leave out waits of {} minutes and more, or make the deadline later.", *hard)});
}

void checkDeadlinesAgainstCycle(const Profile& profile, SettingFindings& findings) {
  const auto& config = profile.config();
  if (!profile.isWell(kMonthly) || !profile.isWell("DaysUntilReset")) return;
  const auto cycle = config.monthlyPatchingCadenceEnabled ? kLongestMonthlyCycle : config.daysUntilReset;
  for (const auto& [key, days] : {std::pair{"DeadlineDaysHard", config.deadlineDaysHard},
                                  std::pair{"DeadlineDaysFocus", config.deadlineDaysFocus}})
    if (days && *days > cycle)
      findings.push_back(
          {warning, key,
           fmt::format("The cycle has {} days, and a deadline never passes the start of the next.", cycle),
           fmt::format("Give it at most {} days, or make the cycle longer.", cycle)});
}

void checkBusinessHours(const Profile& profile, SettingFindings& findings) {
  const auto& config = profile.config();
  if (!config.businessHoursStartTime || !config.businessHoursEndTime) return;
  const int start = *minutesOfDay(*config.businessHoursStartTime);
  const int end = *minutesOfDay(*config.businessHoursEndTime);
  const int length = (end - start + kMinutesOfADay) % kMinutesOfADay;
  const auto say = [&](Severity severity, std::string reason, std::string fix) {
    findings.push_back({severity, "BusinessHoursEndTime", std::move(reason), std::move(fix)});
  };
  if (length == 0) say(error, "Both times are the same, so no moment is within business hours.", "Write another end.");
  if (length == kMinutesOfADay - 1)
    say(error, "Business hours never end but for a minute a day, so nothing can be enforced.", "Write an earlier end.");
  else if (length > kLongBusinessDay)
    say(warning,
        fmt::format("Business hours take {} of the day's 24 hours, which leaves little time to enforce anything in.",
                    length / 60),
        "Write an earlier end.");
  const auto over = config.patchingEndTime ? minutesOfDay(*config.patchingEndTime) : std::nullopt;
  if (over && config.aggressivePatchDayDeferral && (*over - start + kMinutesOfADay) % kMinutesOfADay < length)
    findings.push_back({warning, "PatchingEndTime",
                        "It lies in business hours, and nothing is forced before these end.",
                        "Write a time outside business hours."});
}

void checkLists(const Profile& profile, SettingFindings& findings) {
  const auto& config = profile.config();
  const auto& allowed = config.backgroundPatchClosedAppsAllowList;
  const auto& blocked = config.backgroundPatchClosedAppsBlockList;
  const auto both = std::ranges::count_if(allowed, [&](const auto& label) { return holds(blocked, label); });
  if (both > 0) {
    const bool all = both == std::ssize(allowed);
    findings.push_back(
        {all ? error : warning, "BackgroundPatchClosedAppsBlockList",
         all ? std::string("It blocks every label that the allow list allows, so nothing is updated.")
             : fmt::format("It blocks {} of the {} labels that the allow list allows.", both, allowed.size()),
         "Take each label out of one of the two lists."});
  }
  const auto beaten = std::ranges::count_if(config.ignoredLabels, [&](const auto& label) {
    return holds(config.requiredLabels, label) || holds(config.optionalLabels, label);
  });
  if (beaten > 0)
    findings.push_back({warning, "IgnoredLabels",
                        fmt::format("{} of its {} entries are required or optional too, which beats ignored.", beaten,
                                    config.ignoredLabels.size()),
                        "Take each out of one of the lists."});
}

}  // namespace

SettingFindings checkCombinations(const PlistDict& managed) {
  const Profile profile(managed);
  SettingFindings findings;
  checkRules(profile, findings);
  checkWaits(profile, findings);
  checkDeadlinesAgainstCycle(profile, findings);
  checkBusinessHours(profile, findings);
  checkLists(profile, findings);
  return findings;
}

}  // namespace corvane
