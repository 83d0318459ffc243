#include "ui/windows_application.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QQuickStyle>

namespace corvane::ui {

namespace {

QtMessageHandler toldBefore = nullptr;

// The platform without a display knows no limits of a window's size, and says so at each.
void tellAllButSizeHints(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (!text.contains(QStringLiteral("propagateSizeHints"))) toldBefore(type, context, text);
}

}  // namespace

void prepareApplication() {
  QQuickStyle::setStyle(QStringLiteral("Basic"));
  QGuiApplication::setApplicationName(QStringLiteral("Corvane"));
  QGuiApplication::setDesktopFileName(QStringLiteral("org.corvane.Corvane"));
  QFont font = QGuiApplication::font();
  if (QFontDatabase::hasFamily(QStringLiteral("Inter"))) font.setFamily(QStringLiteral("Inter"));
  font.setPixelSize(13);
  QGuiApplication::setFont(font);
}

void drawWithoutDisplay() {
  if (toldBefore == nullptr) toldBefore = qInstallMessageHandler(tellAllButSizeHints);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
}

}  // namespace corvane::ui
