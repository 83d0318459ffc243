// The four tabs as the form makes them, over preferences in memory.
#include <fmt/format.h>

#include <optional>

#include "pictures/settings_states.h"
#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/scripted_preference_domains.h"
#include "platform/scripted/virtual_time.h"
#include "presentation/settings_parts.h"

namespace corvane {
namespace {

struct NoLog final : LogSink {
  void write(LogLevel, std::string_view) override {}
};

struct NoTelemetry final : TelemetrySwitch {
  [[nodiscard]] bool started() const override { return false; }
  void start() override {}
  void stop() override {}
};

AboutState aboutThisMac() {
  return {.version = "1.0.0 (100)",
          .systemVersion = "15.1",
          .helperStatus = HelperStatus::enabled,
          .helperOperational = true,
          .installomatorVersion = "10.6",
          .installomatorVersionDate = "2026-05-14",
          .canGenerateDiagnostics = true,
          .hasLoginAgent = true,
          .openAtLogin = true};
}

// What a person sees of these domains.
struct Seen {
  PlistDict managed;
  PlistDict user;
  AboutState about = aboutThisMac();
  std::optional<AdminTestState> admin;
};

SettingsPage pageOf(const Seen& seen, const SettingsWindowState& window) {
  VirtualMachine machine;
  NotificationCenter notifications(machine.main());
  ScriptedPreferenceDomains domains(machine.main());
  NoLog log;
  NoTelemetry telemetry;
  domains.setManaged(seen.managed);
  domains.setUser(seen.user);
  PreferenceManager preferences(domains, notifications, log);
  const SettingsViewModel model({preferences, notifications, telemetry, machine.clock(), log});
  const ScriptedLocale locale;
  const AppDisplayTitle title(model.config);
  return makeSettingsPage({.model = model,
                           .about = seen.about,
                           .admin = seen.admin ? &*seen.admin : nullptr,
                           .window = window,
                           .locale = locale,
                           .title = title,
                           .canRevealFiles = true});
}

// Whatever a tab can unfold is unfolded.
Seen byItsUser() {
  return {.managed = {},
          .user = {{"GitHubAPIAuthEnabled", true},
                   {"InstallomatorOptions", "LOGO=/Library/Logos/icon.icns"},
                   {"BusinessHoursStartTime", "09:00"},
                   {"BusinessHoursEndTime", "17:00"},
                   {"IgnoredLabels", PlistArray{"zoom*", "googlechrome"}},
                   {"WebhookURLSlack", "https://hooks.example.com/services/T0/B0/secret"}}};
}

Seen byItsOrganisation() {
  auto seen = byItsUser();
  seen.managed = {{"LockSettings", true},
                  {"SupportTeamName", "Regional Infrastructure and Workplace Service Desk of the Example Foundation"},
                  {"SupportTeamPhone", "+49 30 1234567"},
                  {"SupportTeamEmail", "workplace-service-desk.regional-infrastructure@example-foundation.org"},
                  {"SupportTeamWebsite", "https://support.example-foundation.org/workplace/updates-and-applications"},
                  {"AppTitle", "Example Foundation Application Update Service"}};
  seen.about.helperOperational = false;
  seen.about.helperStatus = HelperStatus::requiresApproval;
  seen.about.organizationLaunchAgentInstalled = true;
  return seen;
}

Seen inTestMode() {
  auto seen = byItsUser();
  seen.managed = {{"AdminTestModeEnabled", true}};
  seen.admin = AdminTestState{.anchorOverride = VirtualMachine::kStart,
                              .nextLaunchOverride = VirtualMachine::kStart + 25h,
                              .focusCount = 2,
                              .hardCount = 3,
                              .lastActionMessage = "Deferral state reset."};
  seen.about.diagnosticBundleURL = "/Users/jane/Desktop/Corvane-Diagnostic-2026-11-01-120000.zip";
  seen.about.resetHelperMessage = "Helper registered, but the daemon did not start. Try Reset Helper again.";
  return seen;
}

}  // namespace

std::vector<SettingsState> settingsTabStates() {
  std::vector<SettingsState> states;
  const auto add = [&](const char* tab, const char* name, const Seen& seen, double textScale = 1) {
    states.push_back({.name = fmt::format("tab-{}{}", tab, name),
                      .page = pageOf(seen, {.selectedTab = tab, .showsAdvancedOptions = true}),
                      .textScale = textScale,
                      .width = static_cast<int>(720 * textScale),
                      .height = static_cast<int>(2200 * textScale)});
  };
  for (const auto* tab : {"installomator", "deferrals", "advanced", "about"}) {
    add(tab, "", byItsUser());
    add(tab, "-managed", byItsOrganisation());
    add(tab, "-large-text", byItsOrganisation(), 1.5);
  }
  add("deferrals", "-test-mode", inTestMode());
  add("about", "-results", inTestMode());
  return states;
}

}  // namespace corvane
