#include "ui/dashboard_window.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QUrl>
#include <algorithm>

#include "ui/application_icons.h"
#include "ui/symbol_images.h"

namespace corvane::ui {

namespace {

constexpr int kPicturesLimit = 5000;  // ms

bool isLoadingPictures(const QQuickItem& item) {
  constexpr int kLoading = 2;  // of QML's Image.Status
  if (item.inherits("QQuickImage") && item.property("status").toInt() == kLoading) return true;
  return std::ranges::any_of(item.childItems(), [](const QQuickItem* child) { return isLoadingPictures(*child); });
}

}  // namespace

DashboardWindow::DashboardWindow(DashboardBridge& bridge) {
  engine_.addImageProvider(QStringLiteral("symbol"), new SymbolImages);
  engine_.addImageProvider(QStringLiteral("application"), new ApplicationIcons);
  engine_.setInitialProperties({{QStringLiteral("bridge"), QVariant::fromValue<QObject*>(&bridge)}});
  engine_.load(QUrl(QStringLiteral("qrc:/Corvane/Dashboard.qml")));
  if (!engine_.rootObjects().isEmpty()) window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().constFirst());
}

DashboardWindow::~DashboardWindow() = default;

void DashboardWindow::show() {
  window_->show();
  // A platform without a screen has no order of windows, and says so each time.
  if (QGuiApplication::platformName() != QStringLiteral("offscreen")) window_->raise();
  window_->requestActivate();
}

void DashboardWindow::resize(int width, int height) { window_->resize(width, height); }

void DashboardWindow::setAppearance(const Appearance& appearance) {
  auto* theme = window_->property("theme").value<QObject*>();
  if (theme == nullptr) return;
  theme->setProperty("reducedMotion", appearance.reducedMotion);
  theme->setProperty("dark", appearance.dark);
}

QImage DashboardWindow::grab() {
  QElapsedTimer waited;
  waited.start();
  do {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  } while (isLoadingPictures(*window_->contentItem()) && waited.elapsed() < kPicturesLimit);
  return window_->grabWindow();
}

}  // namespace corvane::ui
