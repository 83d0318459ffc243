#include "ui/dashboard_bridge.h"

#include <QClipboard>
#include <QGuiApplication>
#include <utility>

#include "base/localized.h"

namespace corvane::ui {

DashboardBridge::DashboardBridge(DashboardActions actions, PromptBridge& prompt, LogBridge* logs, QObject* parent)
    : QObject(parent), actions_(std::move(actions)), prompt_(prompt), logs_(logs) {}

void DashboardBridge::setWindowTitle(const QString& title) {
  if (title == windowTitle_) return;
  windowTitle_ = title;
  Q_EMIT windowTitleChanged();
}

void DashboardBridge::copyText(const QString& text) { QGuiApplication::clipboard()->setText(text); }

QVariantList DashboardBridge::sections() const {
  const auto section = [](const char* tag, std::string_view text, const char* symbol) {
    return QVariantMap{{QStringLiteral("tag"), QString::fromLatin1(tag)},
                       {QStringLiteral("text"), toQString(localized(text))},
                       {QStringLiteral("symbol"), QString::fromLatin1(symbol)}};
  };
  QVariantList all{section("status", toLocalize("Status"), "gauge")};
  if (logs_ != nullptr) all.push_back(section("logs", toLocalize("Logs"), "doc.text"));
  return all;
}

void DashboardBridge::selectSection(const QString& tag) {
  const bool known = tag == QStringLiteral("status") || (tag == QStringLiteral("logs") && logs_ != nullptr);
  if (!known || tag == selectedSection_) return;
  selectedSection_ = tag;
  Q_EMIT selectedSectionChanged();
  if (tag == QStringLiteral("logs")) logs_->refresh();
}

QString DashboardBridge::settingsTitle() const {
  return actions_.openSettings ? toQString(localized("Settings")) : QString();
}

}  // namespace corvane::ui
