#include "ui/page_engine.h"

#include <QElapsedTimer>
#include <QGuiApplication>
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

QQuickWindow* loadPage(QQmlApplicationEngine& engine, const QString& name, QObject& bridge) {
  engine.addImageProvider(QStringLiteral("symbol"), new SymbolImages);
  engine.addImageProvider(QStringLiteral("application"), new ApplicationIcons);
  engine.setInitialProperties({{QStringLiteral("bridge"), QVariant::fromValue<QObject*>(&bridge)}});
  engine.load(QUrl(QStringLiteral("qrc:/Corvane/%1.qml").arg(name)));
  if (engine.rootObjects().isEmpty()) return nullptr;
  return qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
}

void applyAppearance(QQuickWindow& window, const Appearance& appearance) {
  auto* theme = window.property("theme").value<QObject*>();
  if (theme == nullptr) return;
  theme->setProperty("reducedMotion", appearance.reducedMotion);
  theme->setProperty("dark", appearance.dark);
  theme->setProperty("textScale", appearance.textScale);
}

void showInFront(QQuickWindow& window) {
  // Shown once more, a maximised one would be made small.
  if (!window.isVisible())
    window.show();
  else
    window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
  // A platform without a screen has no order of windows, and says so each time.
  if (QGuiApplication::platformName() != QStringLiteral("offscreen")) window.raise();
  window.requestActivate();
}

QImage grabWhole(QQuickWindow& window) {
  // Rows are made when a frame is, and only then ask for their pictures.
  (void)window.grabWindow();
  QElapsedTimer waited;
  waited.start();
  do {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  } while (isLoadingPictures(*window.contentItem()) && waited.elapsed() < kPicturesLimit);
  return window.grabWindow();
}

}  // namespace corvane::ui
