#include "workflow/helper_pass_mirror.h"

#include <fmt/format.h>

#include "base/localized.h"
#include "workflow/status_texts.h"

namespace corvane {

namespace {

std::string nameOf(const CorvaneHelperPassStarted& pass) {
  if (pass.currentLabelDisplayName && !pass.currentLabelDisplayName->empty()) return *pass.currentLabelDisplayName;
  if (pass.currentLabel && !pass.currentLabel->empty()) return *pass.currentLabel;
  return localized("the app");
}

std::string runText(const std::string& runID) { return runID.empty() ? "<unknown>" : runID; }

}  // namespace

void HelperPassMirror::started(const CorvaneHelperPassStarted& pass) {
  c_.log.info(fmt::format("Received .corvaneHelperPassStarted (runID {}, totalLabels={}, currentLabel={}).",
                          runText(pass.runID), pass.totalLabels, pass.currentLabel.value_or("<nil>")));
  if (c_.fields.gate.isPatching && c_.fields.gate.currentOperation != DiscoveryOperation::patchBackground) return;
  c_.gate.setPatching(true);
  c_.gate.setOperation(DiscoveryOperation::patchBackground);
  c_.gate.setHelperPassOwnsPatchingState(true);
  c_.crossings.startBlockingPromptWatch(nameOf(pass));
  c_.messages.status(backgroundPatchStatusText(pass.currentLabelDisplayName, pass.currentLabel, 0, pass.totalLabels));
}

void HelperPassMirror::progressed(const CorvaneHelperPassProgress& pass) {
  if (c_.fields.gate.currentOperation != DiscoveryOperation::patchBackground) return;
  if (c_.fields.blockingPrompt.blockingPromptAppName) return;
  c_.messages.status(backgroundPatchStatusText(pass.currentLabelDisplayName, pass.currentLabel, pass.completedCount,
                                               pass.totalLabels));
}

void HelperPassMirror::ended() {
  const bool background = c_.fields.gate.currentOperation == DiscoveryOperation::patchBackground;
  if (!c_.fields.gate.helperPassOwnsPatchingState && !background) return;
  c_.gate.setHelperPassOwnsPatchingState(false);
  c_.gate.setPatching(false);
  c_.crossings.stopBlockingPromptWatch();
  if (!background) return;
  c_.gate.setOperation(std::nullopt);
  c_.messages.status(std::nullopt);
}

void HelperPassMirror::completed(const CorvaneHelperPassCompleted& pass) {
  c_.log.info(fmt::format("Received .corvaneHelperPassCompleted (runID {}, labels: {}); refreshing.",
                          runText(pass.runID), pass.labels.size()));
  ended();
  c_.crossings.forgetStagedLabels();
  c_.crossings.invalidateReceiptCaches();
  if (!pass.labels.empty()) c_.crossings.checkForUpdates(pass.labels);
}

}  // namespace corvane
