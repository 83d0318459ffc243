// The dashboard page as QML reads it, and its actions as QML calls them. Decides nothing.
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <functional>

#include "presentation/dashboard_page.h"
#include "presentation/first_run_setup_page.h"
#include "presentation/shortcuts_sheet.h"
#include "ui/log_bridge.h"
#include "ui/page_map.h"
#include "ui/prompt_bridge.h"

namespace corvane::ui {

// What the page can ask for. Labels by their text. Only updateItself and openSettings may be absent.
struct DashboardActions {
  std::function<void()> discoverInstalledApps;
  std::function<void()> checkForUpdates;
  std::function<void()> updateAll;
  std::function<void(const std::string& label)> updateApp;
  std::function<void(const std::string& label)> recheck;
  std::function<void()> recheckAll;
  std::function<void(const std::string& label)> toggleHistory;
  std::function<void(const std::string& label)> toggleWhy;
  std::function<void(const std::string& mode)> setFilter;
  std::function<void()> setUpHelper;
  std::function<void()> openHelperSettings;
  std::function<void()> resetHelper;
  std::function<void()> updateItself;
  std::function<void()> dismissSelfUpdate;
  std::function<void(const std::string& key)> setupStep;
  std::function<void()> finishSetup;
  std::function<void()> openSettings;
};

class DashboardBridge final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QQmlPropertyMap* page READ page CONSTANT)
  Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT)
  Q_PROPERTY(QQmlPropertyMap* setup READ setup CONSTANT)
  Q_PROPERTY(QAbstractListModel* setupSteps READ setupSteps CONSTANT)
  Q_PROPERTY(corvane::ui::PromptBridge* prompt READ prompt CONSTANT)
  Q_PROPERTY(QString windowTitle READ windowTitle WRITE setWindowTitle NOTIFY windowTitleChanged)
  Q_PROPERTY(QString settingsTitle READ settingsTitle CONSTANT)
  Q_PROPERTY(QVariant shortcuts READ shortcuts CONSTANT)
  Q_PROPERTY(QVariantList sections READ sections CONSTANT)
  Q_PROPERTY(QString selectedSection READ selectedSection WRITE selectSection NOTIFY selectedSectionChanged)
  Q_PROPERTY(corvane::ui::LogBridge* logs READ logs CONSTANT)

 public:
  // `prompt` and `logs` outlive it; null is a window without the page of the logs.
  DashboardBridge(DashboardActions actions, PromptBridge& prompt, LogBridge* logs = nullptr, QObject* parent = nullptr);

  // Hands QML the fields that differ from the page before.
  void setPage(const DashboardPage& page) { map_.set(page); }
  void setSetupPage(const FirstRunSetupPage& page) { setup_.set(page); }
  void setWindowTitle(const QString& title);

  [[nodiscard]] QQmlPropertyMap* page() { return map_.fields(); }
  [[nodiscard]] QAbstractListModel* rows() { return map_.rows(); }
  [[nodiscard]] QQmlPropertyMap* setup() { return setup_.fields(); }
  [[nodiscard]] QAbstractListModel* setupSteps() { return setup_.rows(); }
  [[nodiscard]] PromptBridge* prompt() const { return &prompt_; }
  [[nodiscard]] QString windowTitle() const { return windowTitle_; }
  // Of the button that opens them; empty where there are none.
  [[nodiscard]] QString settingsTitle() const;
  // What the sheet of shortcuts shows.
  [[nodiscard]] QVariant shortcuts() const { return shortcuts_; }
  void setShortcuts(const ShortcutsSheet& sheet) { shortcuts_ = toVariant(sheet); }
  // Of the sidebar: tag, text and symbol of each.
  [[nodiscard]] QVariantList sections() const;
  [[nodiscard]] QString selectedSection() const { return selectedSection_; }
  // By its tag. The log is read anew each time its page appears.
  void selectSection(const QString& tag);
  [[nodiscard]] LogBridge* logs() const { return logs_; }

  Q_INVOKABLE void discoverInstalledApps() { actions_.discoverInstalledApps(); }
  Q_INVOKABLE void checkForUpdates() { actions_.checkForUpdates(); }
  Q_INVOKABLE void updateAll() { actions_.updateAll(); }
  Q_INVOKABLE void updateApp(const QString& label) { actions_.updateApp(label.toStdString()); }
  Q_INVOKABLE void recheck(const QString& label) { actions_.recheck(label.toStdString()); }
  Q_INVOKABLE void recheckAll() { actions_.recheckAll(); }
  Q_INVOKABLE void toggleHistory(const QString& label) { actions_.toggleHistory(label.toStdString()); }
  Q_INVOKABLE void toggleWhy(const QString& label) { actions_.toggleWhy(label.toStdString()); }
  Q_INVOKABLE void copyText(const QString& text);
  Q_INVOKABLE void setFilter(const QString& mode) { actions_.setFilter(mode.toStdString()); }
  Q_INVOKABLE void setUpHelper() { actions_.setUpHelper(); }
  Q_INVOKABLE void openHelperSettings() { actions_.openHelperSettings(); }
  Q_INVOKABLE void resetHelper() { actions_.resetHelper(); }
  Q_INVOKABLE void updateItself() {
    if (actions_.updateItself) actions_.updateItself();
  }
  Q_INVOKABLE void dismissSelfUpdate() { actions_.dismissSelfUpdate(); }
  Q_INVOKABLE void setupStep(const QString& key) { actions_.setupStep(key.toStdString()); }
  Q_INVOKABLE void finishSetup() { actions_.finishSetup(); }
  Q_INVOKABLE void openSettings() {
    if (actions_.openSettings) actions_.openSettings();
  }

 Q_SIGNALS:
  void windowTitleChanged();
  void selectedSectionChanged();

 private:
  DashboardActions actions_;
  PromptBridge& prompt_;
  LogBridge* logs_;
  QString selectedSection_ = QStringLiteral("status");
  PageMap<DashboardPage, AppStatusRow> map_;
  PageMap<FirstRunSetupPage, SetupStep> setup_;
  QString windowTitle_;
  QVariant shortcuts_ = toVariant(ShortcutsSheet());
};

}  // namespace corvane::ui
