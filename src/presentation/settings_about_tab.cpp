#include "core/places.h"
#include "presentation/settings_parts.h"

namespace corvane {
namespace {

void addUsageData(SettingsForm& form) {
  form.section("usageData", form.localized("Anonymous usage data"));
  form.toggle(
      "TelemetryEnabled", form.localized("Send anonymous usage data"),
      form.localized("Sends anonymous signals for update checks and how many apps a finished patch updated. App "
                     "names, user names, and serial numbers are not included. On by default."));
}

void addMenuBar(SettingsForm& form) {
  form.section("menuBar", form.localized("Menu Bar"));
  auto& icon =
      form.control(ControlKind::toggle, SettingsKeys::menuBarIcon, form.localized("Show menu bar icon"),
                   form.in.about.showMenuBarIcon ? "true" : "false",
                   form.localized("Adds a small Corvane icon to the menu bar with quick actions for checking and "
                                  "installing updates. Toggling this takes effect immediately."));
  if (form.in.model.isManaged(SettingsKeys::menuBarIcon)) form.lock(icon);
}

void addStartup(SettingsForm& form) {
  const auto& about = form.in.about;
  const auto toggle = [&](std::string_view key, std::string label, bool on, std::string help) {
    auto& made = form.control(ControlKind::toggle, key, std::move(label), on ? "true" : "false", std::move(help));
    if (form.in.model.isManaged(key)) form.lock(made);
    if (!about.hasLoginAgent || about.organizationLaunchAgentInstalled) made.enabled = false;
  };
  form.section("startup", form.localized("Startup"));
  toggle(SettingsKeys::openAtLogin, form.localized("Open at login"), about.openAtLogin,
         form.localized("Starts Corvane when you log in. Quitting it still leaves it quit until the next login."));
  toggle(SettingsKeys::keepAlive, form.localized("Keep running if quit"), about.keepAlive,
         form.localized("Starts Corvane again if you quit it, and also starts it at login."));
  if (about.organizationLaunchAgentInstalled)
    form.note("organizationAgent", form.localized("A LaunchAgent installed for all users already starts Corvane. These "
                                                  "options stay off while that agent is installed."));
  else if (!about.hasLoginAgent)
    form.note("noAgent", form.localized("This build of Corvane does not start by itself."));
}

void addAppInformation(SettingsForm& form) {
  const auto& about = form.in.about;
  const auto fact = [&](std::string_view key, std::string label, std::string value) {
    form.control(ControlKind::fact, key, std::move(label), std::move(value));
  };
  form.section("appInformation", form.localized("App Information"));
  fact("version", form.localized("Version "), about.version);
  if (about.systemVersion) fact("systemVersion", form.localized("macOS"), *about.systemVersion);
  fact("installomatorSource", form.localized("Installomator Source"),
       localized(displayText(form.in.model.config.installomatorVersion)));
  fact("installedRuntime", form.localized("Installed Runtime"),
       about.installomatorVersion.value_or(form.localized("Not installed yet")));
  if (about.installomatorVersionDate)
    fact("runtimeDate", form.localized("Runtime Date"), *about.installomatorVersionDate);
}

void addSupport(SettingsForm& form) {
  const auto support = SupportInfo::of(form.in.model.config);
  if (!support.hasAny()) return;
  form.section("support", form.localized("Support"));
  if (support.name) form.note("supportName", *support.name);
  const auto fact = [&](std::string_view key, std::string label, const std::optional<std::string>& value) {
    if (value) form.control(ControlKind::fact, key, std::move(label), *value);
  };
  fact("supportPhone", form.localized("Phone"), support.phone);
  fact("supportEmail", form.localized("Email"), support.email);
  // An address to follow only where it is one: what a profile says is opened as it stands.
  const bool isAddress =
      support.website && (support.website->starts_with("https://") || support.website->starts_with("http://"));
  if (isAddress)
    form.control(ControlKind::link, "supportWebsite", form.localized("Website"), *support.website, *support.website);
  else
    fact("supportWebsite", form.localized("Website"), support.website);
  if (form.in.model.flags().isSupportInfoManaged)
    form.note("supportManaged", form.localized("Provided by your organization through managed configuration."));
}

void addHelper(SettingsForm& form) {
  const auto& about = form.in.about;
  form.section("helperStatus", form.localized("Helper Status"));
  auto& registration = form.control(ControlKind::fact, "registration", form.localized("Registration"),
                                    helperStatusText(about.helperStatus));
  registration.color = about.helperStatus == HelperStatus::enabled ? ColorRole::green : ColorRole::orange;
  auto& operational = form.control(ControlKind::fact, "operational", form.localized("Operational"),
                                   about.helperOperational ? form.localized("Yes") : form.localized("No"));
  operational.color = about.helperOperational ? ColorRole::green : ColorRole::orange;
  if (about.helperStatus == HelperStatus::requiresApproval)
    form.button(SettingsKeys::loginItems, form.localized("Open Login Items & Extensions"));

  form.section("resetHelper", form.localized("Reset Helper"));
  form.button(
      SettingsKeys::resetHelper, form.localized("Reset Helper"),
      !form.in.model.isSettingsLocked() && !about.resetHelperInProgress,
      form.localized("Unregisters and re-registers the root helper. Use it after a rebuild or an upgrade when the "
                     "daemon stops launching with a launch-constraint or signature mismatch error."));
  if (about.resetHelperInProgress) form.note("resetProgress", form.localized("Resetting root helper…"));
  if (about.resetHelperMessage) {
    auto& result =
        form.control(ControlKind::fact, "resetResult", {}, form.in.title.userFacing(*about.resetHelperMessage));
    result.color = about.resetHelperWasSuccessful ? ColorRole::green : ColorRole::red;
  }
}

void addDiagnostics(SettingsForm& form) {
  const auto& about = form.in.about;
  form.section("diagnostics", form.localized("Diagnostics"));
  form.button(
      SettingsKeys::generateBundle, form.localized("Generate Diagnostic Bundle"),
      about.canGenerateDiagnostics && !about.diagnosticInProgress,
      form.localized("Generates a single zip on your Desktop containing Corvane logs, the redacted preferences "
                     "plist, the helper background-patch state, and the most recent patching receipts. Useful when "
                     "reporting an issue — attach the zip instead of cherry-picking files."));
  if (about.diagnosticInProgress) form.note("bundleProgress", form.localized("Collecting files…"));
  if (const auto& bundle = about.diagnosticBundleURL) {
    auto& result = form.control(ControlKind::fact, "bundleResult", {},
                                form.texts().localized("Saved to {} on your Desktop.", bundle->filename().string()));
    result.color = ColorRole::green;
    if (form.in.canRevealFiles) form.button(SettingsKeys::revealBundle, form.localized("Reveal in Finder"));
  }
  if (about.diagnosticErrorMessage)
    form.control(ControlKind::fact, "bundleResult", {}, *about.diagnosticErrorMessage).color = ColorRole::red;
}

void addCredits(SettingsForm& form) {
  const auto project = "https://github.com/" + std::string(CorvaneConstants::githubRepo);
  form.section("credits", form.localized("Credits & Links"));
  form.control(ControlKind::link, "project", form.localized("Corvane project"), project, project);
  form.control(ControlKind::link, "wiki", form.localized("Corvane wiki"), project + "/wiki", project + "/wiki");
  form.note("creditsText", form.localized("Updates are installed by Installomator and its labels, the work of many "
                                          "administrators."));
}

}  // namespace

void addAboutTab(SettingsForm& form) {
  addUsageData(form);
  addMenuBar(form);
  addStartup(form);
  addAppInformation(form);
  addSupport(form);
  addHelper(form);
  addDiagnostics(form);
  addCredits(form);
}

}  // namespace corvane
