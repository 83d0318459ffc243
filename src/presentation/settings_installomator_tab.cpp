#include "base/ascii.h"
#include "presentation/settings_parts.h"

namespace corvane {
namespace {

std::vector<ControlChoice> notifyChoices() {
  return {{"success", localized("On success")}, {"silent", localized("Silent")}, {"all", localized("All")}};
}

std::vector<ControlChoice> blockingChoices() {
  return {{"ignore", localized("Ignore")},
          {"quit", localized("Quit")},
          {"quit_kill", localized("Quit, then kill")},
          {"silent_fail", localized("Silent fail")},
          {"prompt_user", localized("Prompt user")},
          {"prompt_user_then_kill", localized("Prompt, then kill")},
          {"prompt_user_loop", localized("Prompt loop")},
          {"tell_user", localized("Tell user")},
          {"tell_user_then_kill", localized("Tell user, then kill")},
          {"kill", localized("Kill")}};
}

// All but the two that say something in the user's language are names.
std::vector<ControlChoice> logoChoices() {
  return {{"appstore", localized("App Store")},
          {"jamf", "Jamf"},
          {"mosyleb", "Mosyle Business"},
          {"mosylem", "Mosyle Manager"},
          {"addigy", "Addigy"},
          {"microsoft", "Microsoft Intune"},
          {"ws1", "Workspace ONE"},
          {"filewave", "FileWave"},
          {"kandji", "Kandji"},
          {"custom", localized("Custom path")}};
}

void addGitHub(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  const auto& config = form.in.model.config;
  form.section("gitHubAPI", localized("GitHub API"));
  auto help = localized("Sends a personal access token on the GitHub API requests that check Installomator.");
  if (config.githubAPIAuthEnabled)
    help +=
        "\n" +
        localized("The rate limit rises from 60 to 5,000 requests an hour. Archive downloads stay without the token.");
  auto& authenticate = form.toggle("GitHubAPIAuthEnabled", localized("Authenticate API requests"), std::move(help));
  if (config.githubAPIAuthEnabled && trimmed(config.githubAPIToken).empty())
    authenticate.problem = localized("GitHub API calls fail until a token is saved.");
  auto& token =
      form.field(ControlKind::secret, "GitHubAPIToken", localized("Personal access token"), localized("github_pat_..."),
                 localized("A fine-grained token with Contents: Read on the repositories Corvane queries. The "
                           "token is stored in preferences and is not written to the log."));
  // One that cannot be edited need not reach the window.
  if (!token.enabled && !token.value.empty()) token.value = "••••••••";
}

void addUserExperience(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("userExperience", localized("User Experience"));
  form.picker("NOTIFY", localized("Notifications"), notifyChoices(),
              localized("Controls when Installomator shows notifications."));
  form.picker("BLOCKING_PROCESS_ACTION", localized("Blocking process action"), blockingChoices(),
              localized("How to handle running apps that block installation."));
  form.picker("LOGO", localized("Logo"), logoChoices(),
              localized("Logo used in dialogs when apps are blocking installation."));
  if (form.in.model.options.logo == "custom")
    form.field(ControlKind::text, SettingsViewModel::kLogoPath, localized("Custom logo path"),
               localized("/Applications/MyOrg.app or /Library/Logos/icon.icns"),
               localized("Path to an .app, .icns, or image file to use as the dialog logo."));
  form.toggle("REOPEN", localized("Re-open app after update"));
  form.note(
      "userExperienceNote",
      localized("These options shape what the user sees while Installomator runs and how blocking apps are handled."));
}

void addAdvancedBehavior(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("advancedBehavior", localized("Advanced Behavior"));
  form.control(
      ControlKind::disclosure, SettingsKeys::advancedOptions, localized("Show advanced installation options"),
      form.in.window.showsAdvancedOptions ? "true" : "false",
      localized("These are rarely needed day-to-day, but they are still available when you need finer control over "
                "how installs behave."));
  if (!form.in.window.showsAdvancedOptions) return;
  form.toggle("IGNORE_APP_STORE_APPS", localized("Replace App Store apps"),
              localized("When enabled, App Store / VPP versions will be replaced and managed by Installomator."));
  form.toggle("SYSTEMOWNER", localized("Set root:wheel as owner of copied apps"),
              localized("When enabled, installed apps are owned by root:wheel instead of the current user."));
  form.toggle("INSTALL", localized("Force install even if same version"),
              localized("When enabled, Installomator will install even if the version appears unchanged."));
  form.toggle("INTERRUPT_DND", localized("Interrupt Do Not Disturb / full screen apps"),
              localized("When disabled, installation will abort if an active DND full screen app is detected."));
}

}  // namespace

void addInstallomatorTab(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("installomatorVersion", localized("Installomator Version"));
  form.picker<InstallomatorVersion>(
      "InstallomatorVersion", localized("Version"),
      localized("Controls which Installomator branch is used for discovery and patching."));
  form.section("installomatorScript", localized("Installomator Script"));
  form.toggle(
      "InstallomatorAssembleFromFragments", localized("Build Installomator.sh from label fragments"),
      localized("Rebuilds Installomator.sh from the downloaded label fragments for the Main and Custom versions.") +
          "\n" +
          localized("Installomator regenerates Installomator.sh from its label fragments only from time to time, so "
                    "a label that was changed since is not in it yet. Built here, the script always holds the "
                    "labels as they were downloaded. A release is taken as it is."));
  addGitHub(form);
  addUserExperience(form);
  addAdvancedBehavior(form);

  form.section("network", localized("Network & Process"));
  form.field(
      ControlKind::text, "IGNORE_DND_APPS", localized("Ignore DND apps"),
      localized("e.g. Safari, Amphetamine, Final Cut Pro"),
      localized("Comma-separated app names that should not block installs even when in Do Not Disturb / full screen."));
  form.field(ControlKind::text, "PROXY", localized("Proxy"), localized("e.g. proxy.example.com:8080"),
             localized("Optional HTTP proxy used by Installomator for downloads."));
  form.stepper("PROMPT_TIMEOUT", localized("Prompt timeout:"),
               localized("How long Installomator waits for user prompts before exiting."));
  form.note(
      "optionsNote",
      localized("These settings are composed into the Installomator options string used for all label executions."));
}

}  // namespace corvane
