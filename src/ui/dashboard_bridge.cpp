#include "ui/dashboard_bridge.h"

#include <QClipboard>
#include <QGuiApplication>
#include <utility>

#include "base/localized.h"

namespace corvane::ui {

DashboardBridge::DashboardBridge(DashboardActions actions, PromptBridge& prompt, QObject* parent)
    : QObject(parent), actions_(std::move(actions)), prompt_(prompt) {}

void DashboardBridge::setWindowTitle(const QString& title) {
  if (title == windowTitle_) return;
  windowTitle_ = title;
  Q_EMIT windowTitleChanged();
}

void DashboardBridge::copyText(const QString& text) { QGuiApplication::clipboard()->setText(text); }

QString DashboardBridge::statusSectionTitle() const { return toQString(localized("Status")); }

QString DashboardBridge::settingsTitle() const {
  return actions_.openSettings ? toQString(localized("Settings")) : QString();
}

}  // namespace corvane::ui
