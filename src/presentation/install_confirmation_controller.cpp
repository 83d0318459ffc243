#include "presentation/install_confirmation_controller.h"

#include <utility>

#include "core/preferences/display_title.h"

namespace corvane {

InstallConfirmationController::InstallConfirmationController(StatusViewModel& model, const WorkflowServices& services)
    : model_(model),
      services_(services),
      countdown_(
          services_.main, services_.clock, [this] { tell(); }, [this] { accept(); }) {}

void InstallConfirmationController::confirmUpdateAll() {
  show(
      [this] {
        model_.updateAllFromMenuBar();
        Logger(services_.log, "InstallConfirmation").info("Update All confirmed from the menu bar.");
      },
      [] {});
}

void InstallConfirmationController::show(Task onConfirm, Task onDecline) {
  onConfirm_ = std::move(onConfirm);
  onDecline_ = std::move(onDecline);
  ++question_;
  countdown_.start(kConfirmationSeconds);
  page_.visible = true;
  tell();
}

void InstallConfirmationController::accept() { answer(onConfirm_); }

void InstallConfirmationController::decline() { answer(onDecline_); }

// What is run may ask again.
void InstallConfirmationController::answer(Task& chosen) {
  if (!page_.visible) return;
  auto task = std::move(chosen);
  onConfirm_ = nullptr;
  onDecline_ = nullptr;
  countdown_.stop();
  page_ = {};
  tell();
  if (task) task();
}

void InstallConfirmationController::tell() {
  const PageTexts texts{AppDisplayTitle(services_.preferences.loadConfiguration())};
  if (page_.visible) page_ = makeConfirmationPage(countdown_.remainingSeconds(), texts);
  observers_.tell();
}

}  // namespace corvane
