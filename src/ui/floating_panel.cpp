#include "ui/floating_panel.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <algorithm>

#include "ui/every_workspace.h"
#include "ui/page_engine.h"

namespace corvane::ui {

FloatingPanel::~FloatingPanel() = default;

bool FloatingPanel::make() {
  engine_ = std::make_unique<QQmlApplicationEngine>();
  window_ = loadPage(*engine_, page_, bridge_);
  if (window_ == nullptr) return false;
  applyAppearance(*window_, appearance_);
  showOnEveryWorkspace(*window_);
  // It asks for no button that minimises; where the desktop has a way all the same, it comes back.
  connect(window_, &QWindow::windowStateChanged, this, [this](Qt::WindowState state) {
    if (state == Qt::WindowMinimized) window_->showNormal();
  });
  const auto follow = [this](const QScreen* screen) {
    connect(screen, &QScreen::availableGeometryChanged, this, [this] { comeBackToAScreen(); });
  };
  for (const auto* screen : QGuiApplication::screens()) follow(screen);
  connect(qGuiApp, &QGuiApplication::screenAdded, this, follow);
  connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this] { comeBackToAScreen(); });
  connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this] { comeBackToAScreen(); });
  return true;
}

bool FloatingPanel::show() {
  if (window_ == nullptr && !make()) return false;
  if (!window_->isVisible()) centre();
  showInFront(*window_);
  return true;
}

void FloatingPanel::hide() {
  if (window_ != nullptr) window_->hide();
}

void FloatingPanel::setAppearance(const Appearance& appearance) {
  appearance_ = appearance;
  if (window_ != nullptr) applyAppearance(*window_, appearance);
}

void FloatingPanel::centre() {
  const auto* screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) return;
  window_->setPosition(screen->availableGeometry().center() - QPoint(window_->width() / 2, window_->height() / 2));
}

void FloatingPanel::comeBackToAScreen() {
  const auto screens = QGuiApplication::screens();
  const bool seen = std::ranges::any_of(screens, [&](const QScreen* screen) {
    return screen->availableGeometry().contains(window_->geometry().center());
  });
  if (!seen) centre();
}

}  // namespace corvane::ui
