#include "ui/settings_window.h"

#include <QQuickWindow>

#include "ui/page_engine.h"

namespace corvane::ui {

SettingsWindow::SettingsWindow(SettingsBridge& bridge)
    : window_(loadPage(engine_, QStringLiteral("SettingsWindow"), bridge)) {
  if (window_ == nullptr) return;
  connect(window_, &QWindow::visibleChanged, this, [this](bool visible) {
    if (!visible) Q_EMIT closed();
  });
}

// The engine takes the window with it, which is no closing by its user.
SettingsWindow::~SettingsWindow() {
  if (window_ != nullptr) window_->disconnect(this);
}

void SettingsWindow::show() { showInFront(*window_); }

void SettingsWindow::setAppearance(const Appearance& appearance) { applyAppearance(*window_, appearance); }

QImage SettingsWindow::grab() { return grabWhole(*window_); }

}  // namespace corvane::ui
