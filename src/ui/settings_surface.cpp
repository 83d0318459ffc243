#include "ui/settings_surface.h"

#include <QQuickWindow>

namespace corvane::ui {

struct SettingsSurface::Open {
  Open(StatusViewModel& model, const WorkflowServices& services, const SettingsParts& parts, PromptBridge& prompt)
      : controller(model, services, parts), bridge(controller, prompt), window(filled()) {
    changes = controller.observe([this] { bridge.setPage(controller.page()); });
  }
  // The window is made of the page as it is, so that nothing moves once it shows.
  SettingsBridge& filled() {
    bridge.setPage(controller.page());
    return bridge;
  }

  SettingsController controller;
  SettingsBridge bridge;
  SettingsWindow window;
  Lease changes;
};

SettingsSurface::SettingsSurface(StatusViewModel& model, const WorkflowServices& services, const SettingsParts& parts,
                                 PromptBridge& prompt)
    : model_(model), services_(services), parts_(parts), prompt_(prompt) {}

SettingsSurface::~SettingsSurface() = default;

void SettingsSurface::open() {
  dropClosed();
  if (!open_) {
    open_ = std::make_unique<Open>(model_, services_, parts_, prompt_);
    if (!open_->window.ok()) {
      open_.reset();
      Logger(services_.log, "SettingsView").error("The settings window could not be made.");
      return;
    }
    open_->window.setAppearance(appearance_);
    // Its own call must end before it is deleted.
    QObject::connect(&open_->window, &SettingsWindow::closed, &open_->window,
                     [this] { services_.main.post(lifeline_.guard([this] { dropClosed(); })); });
  }
  open_->window.show();
}

void SettingsSurface::dropClosed() {
  if (open_ && !open_->window.window()->isVisible()) open_.reset();
}

void SettingsSurface::setAppearance(const Appearance& appearance) {
  appearance_ = appearance;
  if (open_) open_->window.setAppearance(appearance);
}

SettingsWindow* SettingsSurface::window() { return open_ ? &open_->window : nullptr; }

}  // namespace corvane::ui
