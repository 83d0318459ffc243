#include "core/client/helper_installation_service.h"

#include "base/localized.h"
#include "core/preferences/preference_manager.h"

namespace corvane {
namespace {

constexpr std::string_view kDigestKey = "LastRegisteredHelperCDHash";

}  // namespace

std::string helperStatusText(HelperStatus status) {
  switch (status) {
    case HelperStatus::enabled:
      return localized("Enabled");
    case HelperStatus::requiresApproval:
      return localized("Requires Approval");
    case HelperStatus::notRegistered:
      return localized("Not Registered");
    case HelperStatus::notFound:
      return localized("Not Found in App Bundle");
    case HelperStatus::unknown:
      break;
  }
  return localized("Unknown");
}

std::string helperStatusBannerText(HelperStatus status) {
  switch (status) {
    case HelperStatus::requiresApproval:
      return localized("Root helper requires approval in System Settings › Login Items.");
    case HelperStatus::notRegistered:
      return localized("Root helper is not registered — patching is unavailable.");
    case HelperStatus::notFound:
      return localized(
          "Root helper plist not in app bundle — Xcode project setup needed (see HelperInstallationService).");
    case HelperStatus::enabled:
    case HelperStatus::unknown:
      break;
  }
  return localized("Root helper is not operational — patching is unavailable.");
}

std::string_view helperStatusName(HelperStatus status) {
  switch (status) {
    case HelperStatus::enabled:
      return "enabled";
    case HelperStatus::requiresApproval:
      return "requiresApproval";
    case HelperStatus::notRegistered:
      return "notRegistered";
    case HelperStatus::notFound:
      return "notFound";
    case HelperStatus::unknown:
      break;
  }
  return "unknown";
}

Error HelperResetError::alreadyInProgress() {
  return {.domain = domain, .code = alreadyInProgressCode, .text = localized("A helper reset is already in progress.")};
}

HelperInstallationService::HelperInstallationService(Services services, std::filesystem::path heartbeat)
    : s_(services), heartbeat_(std::move(heartbeat)) {}

HelperInstallationService::~HelperInstallationService() { resetDone_.abandon(); }

HelperStatus HelperInstallationService::status() const { return s_.registration.status(); }

bool HelperInstallationService::isOperational() const {
  if (status() != HelperStatus::enabled) return false;
  const auto written = helperHeartbeatDate();
  if (!written) return false;
  const auto age = s_.clock.now() - *written;
  return age < kHelperHeartbeatFresh && age > -kHelperHeartbeatFresh;
}

bool HelperInstallationService::helperBinaryHasChanged() const {
  const auto stored = lastRegisteredHelperCDHash();
  const auto current = currentHelperCDHash();
  return stored && current && *stored != *current;
}

std::optional<std::string> HelperInstallationService::lastRegisteredHelperCDHash() const {
  return s_.preferences.readOptional<std::string>(kDigestKey);
}

std::optional<std::string> HelperInstallationService::currentHelperCDHash() const { return s_.bundle.helperDigest(); }

void HelperInstallationService::recordCurrentHelperCDHashIfNeeded() {
  const auto current = currentHelperCDHash();
  if (!current || current == lastRegisteredHelperCDHash()) return;
  s_.preferences.writePreference(kDigestKey, PlistValue(*current));
}

Status HelperInstallationService::registerHelper() {
  auto registered = s_.registration.registerDaemon();
  if (registered) recordCurrentHelperCDHashIfNeeded();
  return registered;
}

std::optional<Uuid> HelperInstallationService::tryBeginReset() {
  if (token_) return std::nullopt;
  token_ = s_.entropy.uuid();
  return token_;
}

void HelperInstallationService::endReset(Uuid token) {
  if (token_ == token) token_.reset();
}

void HelperInstallationService::performReset(Uuid token, Completion<Result<HelperResetResult>> done) {
  if (token_ != token || resetDone_) {
    s_.main.post([done = std::move(done)]() mutable { done(std::unexpected(HelperResetError::alreadyInProgress())); });
    return;
  }
  resetDone_ = std::move(done);
  s_.registration.unregisterDaemon(
      lifeline_.guard([this](Status unregistered) { registerAfresh(std::move(unregistered)); }));
}

void HelperInstallationService::registerAfresh(Status unregistered) {
  if (!unregistered) return finishReset(std::unexpected(unregistered.error()));
  const auto before = s_.clock.now();
  if (auto registered = registerHelper(); !registered) return finishReset(std::unexpected(registered.error()));
  resetRegisteredAt_ = before;
  resetGivesUpAt_ = s_.clock.steadyNow() + kHelperResetWait;
  resetPoll_ = s_.main.every(kHelperResetPoll, [this] { lookForHeartbeat(); });
}

void HelperInstallationService::lookForHeartbeat() {
  const auto now = status();
  const auto written = helperHeartbeatDate();
  // File systems keep time in coarse ticks, so a heartbeat may seem a little older than the registration.
  const bool beats = written && *written + 10ms >= resetRegisteredAt_;
  const bool settled = now != HelperStatus::enabled || beats || s_.clock.steadyNow() >= resetGivesUpAt_;
  if (!settled) return;
  finishReset(HelperResetResult{.status = now, .operational = now == HelperStatus::enabled && beats});
}

void HelperInstallationService::finishReset(Result<HelperResetResult> result) {
  auto done = std::move(resetDone_);
  auto poll = std::move(resetPoll_);
  s_.main.post([done = std::move(done), result = std::move(result)]() mutable { done(std::move(result)); });
}

void HelperInstallationService::openLoginItemsSettings() { s_.registration.openSettings(); }

std::optional<Date> HelperInstallationService::helperHeartbeatDate() const { return s_.files.modified(heartbeat_); }

std::optional<std::int32_t> HelperInstallationService::launchctlPrintExitCode() const {
  return s_.registration.printExitCode();
}

std::optional<std::int32_t> HelperInstallationService::kickstartRegisteredDaemon() {
  return s_.registration.kickstart();
}

}  // namespace corvane
