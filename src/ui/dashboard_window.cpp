#include "ui/dashboard_window.h"

#include <QQmlComponent>
#include <QQuickWindow>
#include <QUrl>

#include "ui/symbol_images.h"

namespace corvane::ui {

DashboardWindow::DashboardWindow(DashboardBridge& bridge) {
  engine_.addImageProvider(QStringLiteral("symbol"), new SymbolImages);
  engine_.setInitialProperties({{QStringLiteral("bridge"), QVariant::fromValue<QObject*>(&bridge)}});
  engine_.load(QUrl(QStringLiteral("qrc:/Corvane/Dashboard.qml")));
  if (!engine_.rootObjects().isEmpty()) window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().constFirst());
}

DashboardWindow::~DashboardWindow() = default;

void DashboardWindow::show() {
  window_->show();
  window_->raise();
  window_->requestActivate();
}

void DashboardWindow::resize(int width, int height) { window_->resize(width, height); }

void DashboardWindow::setAppearance(const Appearance& appearance) {
  auto* theme = window_->property("theme").value<QObject*>();
  if (theme == nullptr) return;
  theme->setProperty("reducedMotion", appearance.reducedMotion);
  theme->setProperty("dark", appearance.dark);
}

QImage DashboardWindow::grab() { return window_->grabWindow(); }

}  // namespace corvane::ui
