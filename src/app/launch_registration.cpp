#include "app/launch_registration.h"

#include <fmt/format.h>

namespace corvane {
namespace {

std::string_view lineBefore(HelperStatus status) {
  switch (status) {
    case HelperStatus::enabled:
      return "Root helper is running";
    case HelperStatus::requiresApproval:
      return "Root helper awaiting approval in System Settings › Login Items & Extensions";
    case HelperStatus::notRegistered:
      return "Registering root helper…";
    case HelperStatus::notFound:
      return "Root helper not yet known to smd; attempting registration…";
    case HelperStatus::unknown:
      break;
  }
  return "Root helper status unknown; attempting registration…";
}

}  // namespace

void registerHelperAtLaunch(HelperInstallationService& installation, const Logger& log) {
  if (installation.isResetInFlight())
    return log.info("Skipping launch registration because a helper reset is already in progress.");
  const auto status = installation.status();
  log.info(lineBefore(status));
  if (status == HelperStatus::enabled || status == HelperStatus::requiresApproval)
    return installation.recordCurrentHelperCDHashIfNeeded();
  if (const auto registered = installation.registerHelper(); !registered) {
    const auto& error = registered.error();
    return log.error(
        fmt::format("Helper registration failed: {} (domain: {}, code: {})", error.text, error.domain, error.code));
  }
  log.info(fmt::format("Root helper register() returned without error (post-status: {})",
                       helperStatusName(installation.status())));
}

}  // namespace corvane
