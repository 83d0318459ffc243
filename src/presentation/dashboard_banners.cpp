// What stands above the list when the set-up is broken or the program itself is out of date.
#include "presentation/dashboard_parts.h"

namespace corvane {

namespace {

std::string helperLine(HelperStatus status, const PageTexts& texts) {
  switch (status) {
    case HelperStatus::requiresApproval:
      return texts.text("Root helper requires approval in System Settings › Login Items.");
    case HelperStatus::notRegistered:
      return texts.text("Root helper is not registered — patching is unavailable.");
    case HelperStatus::notFound:
      return texts.text(
          "The root helper's property list is missing from the application bundle — patching is unavailable.");
    case HelperStatus::enabled:
    case HelperStatus::unknown:
      break;
  }
  return texts.text("Root helper is not operational — patching is unavailable.");
}

}  // namespace

HelperSetupBanner makeHelperSetupBanner(const DashboardInputs& inputs, const PageTexts& texts) {
  const auto& helper = inputs.fields.helper;
  if (helper.helperOperational && helper.installomatorAvailable) return {};
  const bool setsUp = inputs.helperStatus == HelperStatus::notRegistered;
  const bool approves = inputs.helperStatus == HelperStatus::requiresApproval;

  HelperSetupBanner banner{.visible = true};
  if (!helper.helperOperational) banner.helperLine = helperLine(inputs.helperStatus, texts);
  if (!helper.installomatorAvailable) {
    banner.installomatorLine = texts.text("Installomator not found — update detection and patching will not work.");
  }
  banner.setUp = {.text = texts.text("Set Up Helper"), .visible = setsUp, .enabled = setsUp};
  banner.openSettings = {.text = texts.text("Approve in System Settings"), .visible = approves, .enabled = approves};
  banner.reset = {.text = texts.text("Reset Helper"),
                  .help = texts.text("Unregister and immediately re-register the root helper with macOS. Useful after "
                                     "upgrading the app."),
                  .visible = !setsUp && !approves,
                  .enabled = !setsUp && !approves};
  banner.resetConfirmationTitle = texts.text("Reset Root Helper?");
  banner.resetConfirmationText = texts.text(
      "This will unregister the Corvane root helper and immediately re-register it with the current build. "
      "macOS may prompt you to approve the helper again in System Settings › Login Items & Extensions.");
  banner.confirmReset = {.text = texts.text("Reset"), .visible = true, .enabled = true};
  banner.cancelReset = {.text = texts.text("Cancel"), .visible = true, .enabled = true};
  return banner;
}

SelfUpdateBanner makeSelfUpdateBanner(const DashboardInputs& inputs, const PageTexts& texts) {
  const auto& available = inputs.fields.selfUpdate.selfUpdateAvailable;
  if (!available || inputs.selfUpdateDismissed) return {};
  SelfUpdateBanner banner{.visible = true, .symbol = "sparkles.square.filled.on.square"};
  banner.title = texts.text("Corvane update available");
  banner.text = available->runningVersion ? texts.text("Version {} is available. You’re currently running {}",
                                                       available->availableVersion, *available->runningVersion)
                                          : texts.text("Version {} is available.", available->availableVersion);
  banner.update = {.text = texts.text("Update"),
                   .help = texts.text("Update Corvane now"),
                   .visible = inputs.capabilities.updatesItself,
                   .enabled = inputs.capabilities.updatesItself && !inputs.fields.selfUpdate.selfUpdateQueued};
  banner.dismiss = {.text = texts.text("Dismiss"), .visible = true, .enabled = true};
  return banner;
}

}  // namespace corvane
