#include "presentation/settings_parts.h"

namespace corvane {
namespace {

void webhook(SettingsForm& form, std::string_view key, std::string label, std::string help = {}) {
  auto& made = form.field(ControlKind::secret, key, std::move(label), {}, std::move(help));
  made.isRevealed = form.in.window.revealed.contains(key);
  made.revealText = made.isRevealed ? form.localized("Hide URL") : form.localized("Reveal URL");
}

void addLabels(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("labels", localized("App Labels"));
  form.field(
      ControlKind::text, "IgnoredLabels", localized("Ignored"), localized("e.g. zoom* googlechrome firefox*"),
      localized(
          "Apps matching these patterns are skipped during discovery, unless Required or Optional also lists them."));
  form.field(ControlKind::text, "RequiredLabels", localized("Required"), localized("e.g. firefox 1password*"),
             localized("Always included, even if also matched by an ignore pattern. Installed when missing."));
  form.field(
      ControlKind::text, "OptionalLabels", localized("Optional"), localized("e.g. obs slack"),
      localized("Discovered even if matched by an ignore pattern. Updated only when installed and out of date."));
  form.note("labelsNote",
            localized("Use Installomator label names separated by spaces. Wildcards `*` and `?` are supported."));
}

void addUpdates(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("versionComparison", localized("Version Comparison"));
  form.picker<VersionComparisonMethod>(
      "VersionComparisonMethod", localized("Method"),
      localized(
          "At least: app is up to date when installed version is greater than or equal to the latest known version. "
          "Exact match: installed version must match exactly."));
  form.toggle("VersionComparisonInstallomatorFallback",
              localized("Allow Installomator fallback when label version is unknown"),
              localized("When enabled, a small subset of labels may use Installomator in DEBUG mode during Check for "
                        "Updates if their latest version cannot be determined from label metadata alone."));

  form.section("webhooks", localized("Webhooks"));
  form.picker<WebhookFeature>("WebhookFeature", localized("Feature"));
  webhook(form, "WebhookURLSlack", localized("Slack Webhook URL"));
  webhook(form, "WebhookURLTeams", localized("Teams Webhook URL"),
          localized("Teams needs a Workflows webhook URL. An Office 365 connector URL will not receive the card."));

  form.section("helper", localized("Helper"));
  form.toggle(
      "AutoResetHelperOnLaunch", localized("Automatically reset the helper if it stops responding"),
      localized("When Corvane detects that the root helper is registered with macOS but no longer responding "
                "(typically after upgrading or rebuilding the app), it will silently unregister and re-register the "
                "helper at most once per launch and once per hour. macOS may prompt you to re-approve the helper in "
                "System Settings › Login Items & Extensions."));

  form.section("selfUpdate", localized("Self-Update"));
  form.toggle(
      "DiscoverSelfUpdateLabel", localized("Show Corvane in the app list"),
      localized("When enabled (default), Corvane itself appears in the dashboard update list so you can update it "
                "via “Update All.” Disable to hide it from the list entirely. When “Automatically update” is also "
                "enabled, Corvane is always hidden from the list regardless of this toggle — the self-update "
                "scheduler handles it silently."));
  form.toggle(
      "SelfUpdateEnabled", localized("Automatically update Corvane itself"),
      localized(
          "When enabled, Corvane checks for its own updates using the configured Installomator label and installs "
          "them silently in the background — through the same pipeline used for every other managed app."));
  form.picker<SelfUpdateFrequency>("SelfUpdateFrequency", localized("Check frequency"));
  form.field(
      ControlKind::text, "SelfUpdateLabel", localized("Installomator label"), localized("e.g. corvane4"),
      localized(
          "The Installomator label used to check for and install Corvane updates. The default, corvane4, tracks 4.x "
          "builds. corvane is the 3.x label. Change this only if you host CRV through a private Installomator fork."));

  form.section("discovery", localized("App Discovery"));
  form.toggle(
      "IgnoreExternalDrives", localized("Ignore apps on external drives"),
      localized("When enabled, Corvane excludes installed-app matches that live on volumes other than your boot "
                "drive (external disks, Time Machine backups, network mounts). The boot volume's `/Applications`, "
                "`/Applications/Utilities`, and `~/Applications` paths are always scanned."));
  form.field(
      ControlKind::multiline, "IgnoreFilePaths", localized("Additional ignored paths"), {},
      localized("Apps whose path contains any of these substrings are excluded from discovery, in addition to the "
                "four hard-coded defaults (Daemon Containers, JAMF Composer, Chrome PWAs, Edge PWAs). One path per "
                "line. Matching is case-insensitive substring match against the absolute path."));

  form.section("updateAllErrors", localized("Update All errors"));
  form.toggle("WorkflowUpdateAllErrorCompletesPatching",
              localized("Mark the cycle complete when Update All has errors"),
              localized("Off by default. When an Update All finishes with one or more errors, Corvane waits "
                        "DeferralTimerError minutes (default 60) and tries again. Turn this on to record the patching "
                        "cadence as complete instead, until the next reset."));
}

void addBackground(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  form.section("background", localized("Background Patching"));
  form.toggle(
      "WorkflowStageUpdates", localized("Download installers before installing"),
      localized("When an update is detected, its installer is downloaded to a local staging folder before any install, "
                "including a background patch of closed apps. Later installs reuse that copy. On by default."));
  form.toggle(
      "BackgroundPatchClosedAppsEnabled", localized("Silently patch apps that aren't currently open"),
      localized("On the schedule below, Corvane will check for available updates and silently install any pending "
                "updates for apps that are not currently running. Apps that are open are skipped — they're handled "
                "by the standard Update All flow with deferrals."));
  form.picker<BackgroundPatchSchedulerMode>(
      "BackgroundPatchClosedAppsScheduler", localized("Scheduler"),
      localized(
          "In-app: scheduling lives inside Corvane and stops when the user fully quits the app from the menu bar. "
          "Best for personal Macs.") +
          "\n" +
          localized("Helper daemon: scheduling lives inside the persistent root helper, so background patching keeps "
                    "running even after the user quits Corvane. Best for MDM-managed fleets."));
  form.stepper("BackgroundPatchClosedAppsIntervalHours", localized("Run every"));
  form.toggle("BackgroundPatchClosedAppsRequireOnAC", localized("Only when on power adapter"));
  form.toggle(
      "BackgroundPatchAtLogin", localized("Check and patch closed apps at login"),
      localized("Right after you log in, most apps are still closed. Corvane checks for updates and installs them "
                "for closed apps then, instead of waiting for the next background pass. Open apps are never quit."));
  form.toggle("BackgroundPatchClosedAppsNotifyOnCompletion",
              localized("Show a notification when a background pass finishes"));
  form.toggle("UpdatesAvailableNotificationsEnabled",
              localized("Show a notification when new updates become available"),
              localized("Posts a single notification the first time a Check for Updates surfaces additional pending "
                        "updates. Suppressed automatically when the Corvane window is in the foreground."));
  form.field(ControlKind::text, "BackgroundPatchClosedAppsAllowList", localized("Allow list (optional)"),
             localized("e.g. firefox vlc obs"),
             localized("When non-empty, only these labels are eligible for background patching."));
  form.field(ControlKind::text, "BackgroundPatchClosedAppsBlockList", localized("Block list"),
             localized("e.g. zoom googlechrome"),
             localized("Labels in this list are never patched in the background, even if they appear above."));
}

}  // namespace

void addAdvancedTab(SettingsForm& form) {
  const auto localized = [&](std::string_view literal) { return form.localized(literal); };
  addLabels(form);
  addUpdates(form);
  addBackground(form);

  form.section("debug", localized("Debug"));
  form.toggle(
      "VerboseMode", localized("Verbose Mode"),
      localized("Adds per-label discovery timings and full Installomator stdout/stderr to the rolling log file. "
                "Useful when filing a bug report or triaging a stuck label. Off by default; safe to leave on "
                "indefinitely — logs are appended to a single rolling file."));
  form.toggle("DebugMode", localized("Debug Mode"),
              localized("Same effect on the rolling log file as Verbose Mode — enabling either one lights up the new "
                        "VERBOSE-level breadcrumbs. Reserved as a separate toggle to mirror the CRV 3.5.0 shell-script "
                        "schema; future builds may add additional debug-only diagnostics here."));
}

}  // namespace corvane
