#include "settings/about_settings.h"

#include <fmt/format.h>

#include <utility>

#include "base/localized.h"
#include "core/discovery/mac_release.h"

namespace corvane {
namespace {

struct ResetOutcome {
  bool success = false;
  std::string text;
};

ResetOutcome outcomeOf(const HelperResetResult& result) {
  switch (result.status) {
    case HelperStatus::enabled:
      if (result.operational) return {true, localized("Helper re-registered and is running.")};
      return {false, localized("Helper registered, but the daemon did not start. Try Reset Helper again.")};
    case HelperStatus::requiresApproval:
      return {true, localized("Re-registered. Approve in System Settings › Login Items & Extensions.")};
    case HelperStatus::notRegistered:
      return {false, localized("Re-registration completed but daemon is not yet registered — try again or reboot.")};
    case HelperStatus::notFound:
      return {false, localized("Re-registration completed but daemon was not found — verify the helper is embedded "
                               "in the app bundle.")};
    case HelperStatus::unknown:
      break;
  }
  return {true, localized("Re-registration completed; status unknown.")};
}

std::string versionOf(const OwnBundle& bundle) {
  auto version = bundle.shortVersion().value_or("");
  const auto build = bundle.version();
  return build ? fmt::format("{} ({})", version, *build) : version;
}

}  // namespace

AboutSettings::AboutSettings(Services services, std::function<void()> changed)
    : s_(std::move(services)), log_(s_.log, "AboutSettings"), changed_(std::move(changed)) {
  state_.version = versionOf(s_.bundle);
  if (auto release = macRelease(s_.files, s_.places)) state_.systemVersion = std::move(release->version);
  state_.canGenerateDiagnostics = static_cast<bool>(s_.generateDiagnostics);
  state_.hasLoginAgent = s_.loginAgent != nullptr;
  look();
}

void AboutSettings::refresh() {
  const auto before = state_;
  look();
  if (state_ != before) changed_();
}

void AboutSettings::look() {
  state_.helperStatus = s_.installation.status();
  state_.helperOperational = s_.installation.isOperational();
  lookAtTool();
  state_.showMenuBarIcon = s_.preferences.readPreference("ShowMenuBarIcon", defaultFlag("ShowMenuBarIcon"));
  const auto agent = s_.loginAgent != nullptr ? s_.loginAgent->choice() : LoginAgentChoice();
  state_.organizationLaunchAgentInstalled = agent.isOrganizations;
  state_.openAtLogin = agent.openAtLogin && !agent.isOrganizations;
  state_.keepAlive = agent.keepAlive && !agent.isOrganizations;
}

// The script is large and seldom changes.
void AboutSettings::lookAtTool() {
  const auto modified = s_.files.modified(s_.places.installomatorScript());
  if (modified && modified == toolRead_) return;
  toolRead_ = modified;
  const auto script = s_.files.read(s_.places.installomatorScript());
  const auto tool = script ? toolVersion(*script) : std::nullopt;
  state_.installomatorVersion = tool ? std::optional(tool->version) : std::nullopt;
  state_.installomatorVersionDate = tool && !tool->date.empty() ? std::optional(tool->date) : std::nullopt;
}

void AboutSettings::askToResetHelper() {
  if (state_.resetHelperInProgress) return;
  state_.showResetHelperConfirmation = true;
  changed_();
}

void AboutSettings::answerReset(bool yes) {
  if (!std::exchange(state_.showResetHelperConfirmation, false)) return;
  if (yes) resetHelper();
  changed_();
}

void AboutSettings::resetHelper() {
  state_.resetHelperWasSuccessful = false;
  auto& service = s_.installation;
  const auto token = service.tryBeginReset();
  if (!token) {
    state_.resetHelperMessage = HelperResetError::alreadyInProgress().text;
    log_.info("Reset Helper skipped — a reset is already in progress.");
    return;
  }
  state_.resetHelperMessage = std::nullopt;
  state_.resetHelperInProgress = true;
  log_.info("Reset Helper requested by user");
  service.performReset(
      *token,
      lifeline_.guard([this, token = *token](const Result<HelperResetResult>& answer) { resetEnded(token, answer); },
                      [&service, token = *token] { service.endReset(token); }));
}

void AboutSettings::resetEnded(Uuid token, const Result<HelperResetResult>& answer) {
  ResetOutcome outcome;
  if (answer) {
    outcome = outcomeOf(*answer);
  } else {
    const auto& error = answer.error();
    outcome.text = localized("Reset Helper failed: {} (domain: {}, code: {})", error.text, error.domain, error.code);
    log_.error(fmt::format("Reset Helper failed: {} (domain: {}, code: {})", error.text, error.domain, error.code));
  }
  s_.installation.endReset(token);
  state_.resetHelperInProgress = false;
  state_.resetHelperWasSuccessful = outcome.success;
  state_.resetHelperMessage = std::move(outcome.text);
  refresh();
  changed_();
}

void AboutSettings::generateDiagnosticBundle() {
  if (state_.diagnosticInProgress || !s_.generateDiagnostics) return;
  state_.diagnosticInProgress = true;
  state_.diagnosticBundleURL = std::nullopt;
  state_.diagnosticErrorMessage = std::nullopt;
  changed_();
  auto show = lifeline_.guard([this](const Result<std::filesystem::path>& bundle) { bundleEnded(bundle); });
  s_.generateDiagnostics(
      [log = log_, &signals = s_.signals, show = std::move(show)](const Result<std::filesystem::path>& bundle) mutable {
        if (bundle) {
          log.info("Diagnostic bundle written to " + bundle->string());
          signals.send({.name = "Diagnostic.generated", .parameters = {}, .floatValue = {}});
        } else {
          log.error("Diagnostic bundle generation failed: " + bundle.error().text);
        }
        show(bundle);
      });
}

void AboutSettings::bundleEnded(const Result<std::filesystem::path>& bundle) {
  state_.diagnosticInProgress = false;
  if (bundle)
    state_.diagnosticBundleURL = *bundle;
  else
    state_.diagnosticErrorMessage = bundle.error().text;
  changed_();
}

void AboutSettings::setShowMenuBarIcon(bool show) {
  s_.preferences.writePreference("ShowMenuBarIcon", show);
  s_.notifications.post(CorvaneSettingsDidChange{});
  refresh();
}

void AboutSettings::chooseLoginAgent(bool openAtLogin, bool keepAlive) {
  if (s_.loginAgent == nullptr || state_.organizationLaunchAgentInstalled) return;
  s_.loginAgent->choose(openAtLogin, keepAlive);
  refresh();
}

}  // namespace corvane
