// What every window of ours is made of: an engine with our pictures, the page's file, the appearance.
#pragma once

#include <QImage>
#include <QObject>
#include <QQmlApplicationEngine>
#include <QString>

#include "ui/desktop_appearance.h"

class QQuickWindow;

namespace corvane::ui {

// Loads "<name>.qml" over its bridge. Null only by a fault of ours; the reason is on standard error.
[[nodiscard]] QQuickWindow* loadPage(QQmlApplicationEngine& engine, const QString& name, QObject& bridge);

void applyAppearance(QQuickWindow& window, const Appearance& appearance);

// Shows the window where it is hidden or minimised, raises it and asks for the keyboard. It keeps the size that its
// user gave it.
void showInFront(QQuickWindow& window);

// What the window shows now, once its pictures have come.
[[nodiscard]] QImage grabWhole(QQuickWindow& window);

}  // namespace corvane::ui
