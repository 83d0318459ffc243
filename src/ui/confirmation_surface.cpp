#include "ui/confirmation_surface.h"

#include "core/preferences/display_title.h"

namespace corvane::ui {

ConfirmationSurface::ConfirmationSurface(InstallConfirmationController& controller, const WorkflowServices& services)
    : controller_(controller),
      services_(services),
      bridge_({.accept = [this] { controller_.accept(); }, .decline = [this] { controller_.decline(); }}),
      panel_(kConfirmationPanel, bridge_) {
  changes_ = controller_.observe([this] { refresh(); });
  refresh();
}

// Each question raises the panel once, also one that takes the place of another.
void ConfirmationSurface::refresh() {
  const auto& page = controller_.page();
  if (!page.visible) panel_.hide();
  bridge_.setWindowTitle(toQString(AppDisplayTitle(services_.preferences.loadConfiguration()).current()));
  bridge_.setPage(page);
  if (!page.visible || shown_ == controller_.question()) return;
  shown_ = controller_.question();
  if (!panel_.show())
    Logger(services_.log, "InstallConfirmation").error("The confirmation's window could not be made.");
}

}  // namespace corvane::ui
