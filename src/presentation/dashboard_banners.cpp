// What stands above the list when the set-up is broken or the program itself is out of date.
#include "presentation/dashboard_parts.h"

namespace corvane {

namespace {

std::string helperLine(HelperStatus status, const PageTexts& texts) {
  switch (status) {
    case HelperStatus::requiresApproval:
      return texts.localized("Root helper requires approval in System Settings › Login Items.");
    case HelperStatus::notRegistered:
      return texts.localized("Root helper is not registered — patching is unavailable.");
    case HelperStatus::notFound:
      return texts.localized(
          "The root helper's property list is missing from the application bundle — patching is unavailable.");
    case HelperStatus::enabled:
    case HelperStatus::unknown:
      break;
  }
  return texts.localized("Root helper is not operational — patching is unavailable.");
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
    banner.installomatorLine =
        texts.localized("Installomator not found — update detection and patching will not work.");
  }
  banner.setUp = {.text = texts.localized("Set Up Helper"), .visible = setsUp, .enabled = setsUp};
  banner.openSettings = {
      .text = texts.localized("Approve in System Settings"), .visible = approves, .enabled = approves};
  banner.reset = {
      .text = texts.localized("Reset Helper"),
      .help = texts.localized("Unregister and immediately re-register the root helper with macOS. Useful after "
                              "upgrading the app."),
      .visible = !setsUp && !approves,
      .enabled = !setsUp && !approves};
  banner.resetConfirmationTitle = texts.localized("Reset Root Helper?");
  banner.resetConfirmationText = texts.localized(
      "This will unregister the Corvane root helper and immediately re-register it with the current build. "
      "macOS may prompt you to approve the helper again in System Settings › Login Items & Extensions.");
  banner.confirmReset = {.text = texts.localized("Reset"), .visible = true, .enabled = true};
  banner.cancelReset = {.text = texts.localized("Cancel"), .visible = true, .enabled = true};
  return banner;
}

SelfUpdateBanner makeSelfUpdateBanner(const DashboardInputs& inputs, const PageTexts& texts) {
  const auto& available = inputs.fields.selfUpdate.selfUpdateAvailable;
  if (!available || inputs.selfUpdateDismissed) return {};
  SelfUpdateBanner banner{.visible = true, .symbol = "sparkles.square.filled.on.square"};
  banner.title = texts.localized("Corvane update available");
  banner.text = available->runningVersion ? texts.localized("Version {} is available. You’re currently running {}",
                                                            available->availableVersion, *available->runningVersion)
                                          : texts.localized("Version {} is available.", available->availableVersion);
  banner.update = {.text = texts.localized("Update"),
                   .help = texts.localized("Update Corvane now"),
                   .visible = inputs.capabilities.updatesItself,
                   .enabled = inputs.capabilities.updatesItself && !inputs.fields.selfUpdate.selfUpdateQueued};
  banner.dismiss = {.text = texts.localized("Dismiss"), .visible = true, .enabled = true};
  return banner;
}

}  // namespace corvane
