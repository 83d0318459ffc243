#include "ui/windows_application.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QQuickStyle>

namespace corvane::ui {

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
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
}

}  // namespace corvane::ui
