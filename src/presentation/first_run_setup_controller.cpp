#include "presentation/first_run_setup_controller.h"

#include <utility>

namespace corvane {

FirstRunSetupController::FirstRunSetupController(StatusViewModel& model, const WorkflowServices& services,
                                                 std::function<void()> revealLog)
    : model_(model), services_(services), revealLog_(std::move(revealLog)) {
  changes_ = model_.observe([this] { refresh(); });
  if (!model_.fields().helper.firstRunSetupCompleted)
    refreshTimer_ = services_.main.every(
        kRefresh, [this] { tick(); }, kRefresh / 10);
  refresh();
}

// The model learns of a helper that has started, and of the tool that it has fetched, only when it looks.
void FirstRunSetupController::tick() {
  const auto& helper = model_.fields().helper;
  const bool alive = services_.installation.isOperational();
  const bool deployed = services_.files.exists(services_.places.installomatorScript());
  if (alive != helper.helperOperational || deployed != helper.installomatorAvailable) model_.refreshHelperState(false);
  refresh();
}

void FirstRunSetupController::refresh() {
  const auto& fields = model_.fields();
  if (fields.helper.firstRunSetupCompleted) refreshTimer_ = {};
  const auto status = services_.installation.status();
  const auto now = services_.clock.now();
  if (!step2InProgressSince_ && installomatorStepState(fields.helper, status) == StepState::inProgress)
    step2InProgressSince_ = now;
  auto page = makeFirstRunSetupPage({.fields = fields,
                                     .locale = services_.locale,
                                     .now = now,
                                     .title = AppDisplayTitle(services_.preferences.loadConfiguration()),
                                     .helperStatus = status,
                                     .step2InProgressSince = step2InProgressSince_,
                                     .revealsLog = static_cast<bool>(revealLog_)});
  if (page == page_) return;
  page_ = std::move(page);
  observers_.tell();
}

void FirstRunSetupController::act(const std::string& key) {
  if (key == "helper") {
    if (services_.installation.status() == HelperStatus::requiresApproval)
      services_.installation.openLoginItemsSettings();
    else
      model_.registerHelper();
  } else if (key == "installomator") {
    if (revealLog_) revealLog_();
  } else if (key == "discovery" && model_.isIdle()) {
    model_.discoverInstalledApps();
  }
}

}  // namespace corvane
