#include "workflow/helper_lifecycle.h"

#include <fmt/format.h>

#include <chrono>
#include <utility>

#include "base/localized.h"
#include "core/preferences/display_title.h"

namespace corvane {
namespace {

struct ResetOutcome {
  bool success = false;
  std::string text;
};

ResetOutcome outcomeOf(const HelperResetResult& result) {
  switch (result.status) {
    case HelperStatus::enabled:
      if (result.operational) return {true, localized("Root helper reset and is running.")};
      return {false, localized("Root helper registered, but the daemon did not start. Try Reset Helper again.")};
    case HelperStatus::requiresApproval:
      return {true, localized("Root helper re-registered. Approve in System Settings › Login Items & Extensions.")};
    case HelperStatus::notRegistered:
      return {false, localized("Root helper re-registration completed but daemon is not yet registered — try again "
                               "or reboot.")};
    case HelperStatus::notFound:
      return {false, localized("Root helper re-registration completed but daemon was not found — reinstall Corvane.")};
    case HelperStatus::unknown:
      break;
  }
  return {true, localized("Root helper re-registration completed; status unknown.")};
}

}  // namespace

HelperLifecycle::HelperLifecycle(const RoomContext& context, HelperFields& fields) : c_(context), fields_(fields) {}

void HelperLifecycle::load() {
  fields_.firstRunSetupCompleted = c_.services.preferences.readFirstRunSetupCompleted();
  fields_.isManagedByMDM = c_.services.preferences.isManagedByMDM();
}

void HelperLifecycle::refreshHelperState(bool runAutoReset) {
  fields_.helperOperational = c_.services.installation.isOperational();
  fields_.installomatorAvailable = c_.services.files.exists(c_.services.places.installomatorScript());
  c_.crossings.fieldsChanged();
  if (!fields_.installomatorAvailable)
    fields_.sawInstallomatorMissing = true;
  else if (fields_.sawInstallomatorMissing && !c_.fields.gate.isLoading)
    discoverOnceDeployed();
  markFirstRunSetupIfComplete();
  if (runAutoReset) c_.crossings.evaluateAutoReset();
}

void HelperLifecycle::discoverOnceDeployed() {
  fields_.sawInstallomatorMissing = false;
  const auto& inventory = c_.fields.inventory;
  if (inventory.lastDiscoveryDate && !inventory.apps.empty()) return;
  c_.log.info("Installomator is now deployed and no apps are discovered; running discovery.");
  c_.crossings.discoverInstalledApps();
}

void HelperLifecycle::markFirstRunSetupIfComplete() {
  if (fields_.firstRunSetupCompleted) return;
  const auto& service = c_.services.installation;
  if (service.status() != HelperStatus::enabled || !service.isOperational()) return;
  if (!c_.services.files.exists(c_.services.places.installomatorScript())) return;
  completeFirstRunSetup();
}

void HelperLifecycle::completeFirstRunSetup() {
  if (fields_.firstRunSetupCompleted) return;
  fields_.firstRunSetupCompleted = true;
  c_.services.preferences.writeFirstRunSetupCompleted(true);
  c_.crossings.fieldsChanged();
  c_.log.info("First-run setup marked complete.");
}

void HelperLifecycle::evaluateAutoReset() {
  const auto now = c_.services.clock.now();
  auto& store = c_.services.preferences;
  if (fields_.postLoginHelperGraceDeadline && now < *fields_.postLoginHelperGraceDeadline) return;
  if (!store.loadConfiguration()->autoResetHelperOnLaunch || fields_.didAttemptAutoReset) return;
  if (c_.gate.patching()) return;
  const auto found = trouble();
  if (!found.operationallyBroken && !found.binaryChanged) return;
  // A date further ahead is of a clock that was set back since.
  if (const auto last = store.readLastAutoHelperResetDate(); last && std::chrono::abs(now - *last) < kResetInterval)
    return logSkippedReset(now - *last, found);
  fields_.didAttemptAutoReset = true;
  store.writeLastAutoHelperResetDate(now);
  if (found.binaryChanged)
    c_.log.warning("Helper binary cdhash changed since last registration — auto-resetting to refresh launchd binding");
  else
    c_.log.warning(
        fmt::format("Helper reports {} but is not operational — auto-resetting", helperStatusName(found.status)));
  resetHelper(true);
}

HelperLifecycle::Trouble HelperLifecycle::trouble() const {
  const auto& service = c_.services.installation;
  const auto status = service.status();
  const bool shouldRun = status == HelperStatus::enabled || status == HelperStatus::unknown;
  return {.status = status,
          .operationallyBroken = shouldRun && !service.isOperational(),
          .binaryChanged = status == HelperStatus::enabled && service.helperBinaryHasChanged()};
}

void HelperLifecycle::logSkippedReset(Duration sinceLast, const Trouble& found) {
  if (std::exchange(fields_.didLogAutoResetSkip, true)) return;
  c_.log.info(
      fmt::format("Skipping auto-reset; last attempt was {}s ago (status={}, operationallyBroken={}, "
                  "binaryChanged={}). Clear LastAutoHelperResetDate to retry sooner.",
                  std::chrono::duration_cast<std::chrono::seconds>(sinceLast).count(), helperStatusName(found.status),
                  found.operationallyBroken, found.binaryChanged));
}

void HelperLifecycle::reconcileHelperAfterLogin() {
  const auto& service = c_.services.installation;
  const auto status = service.status();
  if (status == HelperStatus::enabled && service.helperBinaryHasChanged()) return c_.crossings.evaluateAutoReset();
  if (status != HelperStatus::enabled && status != HelperStatus::unknown) return;
  if (service.isOperational()) return;
  fields_.postLoginHelperGraceDeadline = c_.services.clock.now() + kLoginGrace;
  graceEnds_ = c_.services.clock.steadyNow() + kLoginGrace;
  c_.crossings.fieldsChanged();
  c_.log.info("Helper is registered but not running yet; waiting up to 20s for it to load after login.");
  postLoginHelperReconcile_ = c_.services.main.every(kGracePoll, [this] { lookForLateHelper(); });
}

void HelperLifecycle::lookForLateHelper() {
  refreshHelperState(false);
  const auto& clock = c_.services.clock;
  const bool isOver = clock.now() >= *fields_.postLoginHelperGraceDeadline || clock.steadyNow() >= graceEnds_;
  if (!fields_.helperOperational && !isOver) return;
  fields_.postLoginHelperGraceDeadline.reset();
  c_.crossings.fieldsChanged();
  if (!fields_.helperOperational) return kickstart();
  if (!isOver) c_.log.info("Helper heartbeat appeared during the post-login wait.");
  postLoginHelperReconcile_.release();
}

void HelperLifecycle::kickstart() {
  const auto code = c_.services.installation.kickstartRegisteredDaemon();
  c_.log.info(fmt::format("Asked launchd to start the registered helper (kickstart status={}).",
                          code ? std::to_string(*code) : "could not launch launchctl"));
  postLoginHelperReconcile_ = c_.services.main.after(kAfterKickstart, [this] { lookAfterKickstart(); });
}

void HelperLifecycle::lookAfterKickstart() {
  refreshHelperState(false);
  if (fields_.helperOperational) return c_.log.info("Helper is running after kickstart.");
  c_.log.warning("Helper still not running after kickstart; falling back to re-register.");
  c_.crossings.evaluateAutoReset();
}

void HelperLifecycle::registerHelper() {
  if (const auto registered = c_.services.installation.registerHelper(); !registered) {
    c_.messages.error(localized("Helper registration failed: {}", registered.error().text));
    return;
  }
  refreshHelperState(true);
}

void HelperLifecycle::resetHelper(bool isAutomatic) {
  c_.messages.error(std::nullopt);
  const auto token = c_.services.installation.tryBeginReset();
  if (!token) {
    if (!isAutomatic) c_.messages.status(HelperResetError::alreadyInProgress().text);
    c_.log.info("Reset Helper skipped — a reset is already in progress.");
    return;
  }
  c_.messages.status(
      localized(isAutomatic ? toLocalize("Refreshing root helper…") : toLocalize("Resetting root helper…")));
  c_.log.info(fmt::format("Reset Helper requested by {}", isAutomatic ? "auto-trigger" : "user"));
  auto& service = c_.services.installation;
  service.performReset(
      *token, lifeline_.guard([this, token = *token, isAutomatic](
                                  const Result<HelperResetResult>& answer) { resetEnded(token, isAutomatic, answer); },
                              [&service, token = *token] { service.endReset(token); }));
}

void HelperLifecycle::resetEnded(Uuid token, bool isAutomatic, const Result<HelperResetResult>& answer) {
  ResetOutcome outcome;
  if (answer) {
    outcome = outcomeOf(*answer);
  } else {
    const auto& error = answer.error();
    outcome.text = localized("Reset Helper failed: {} (domain: {}, code: {})", error.text, error.domain, error.code);
    c_.log.error(outcome.text);
  }
  auto& service = c_.services.installation;
  service.endReset(token);
  const bool stillRequiresApproval = service.status() == HelperStatus::requiresApproval;
  refreshHelperState(true);
  if (isAutomatic && !stillRequiresApproval && (!outcome.success || !fields_.helperOperational))
    c_.services.preferences.clearLastAutoHelperResetDate();
  const AppDisplayTitle title(c_.services.preferences.loadConfiguration());
  const auto text = title.userFacing(outcome.text);
  c_.messages.status(outcome.success ? std::optional(text) : std::nullopt);
  c_.messages.error(outcome.success ? std::nullopt : std::optional(text));
}

}  // namespace corvane
