// The dashboard page as QML reads it, and its actions as QML calls them. Decides nothing.
#pragma once

#include <QObject>
#include <QQmlPropertyMap>
#include <QString>
#include <functional>

#include "presentation/dashboard_page.h"
#include "ui/row_list_model.h"

namespace corvane::ui {

// What the page can ask for. Labels by their text. Only updateAll and updateItself may be absent.
struct DashboardActions {
  std::function<void()> discoverInstalledApps;
  std::function<void()> checkForUpdates;
  std::function<void()> updateAll;
  std::function<void(const std::string& label)> updateApp;
  std::function<void(const std::string& label)> recheck;
  std::function<void()> recheckAll;
  std::function<void(const std::string& label)> toggleHistory;
  std::function<void(const std::string& mode)> setFilter;
  std::function<void()> setUpHelper;
  std::function<void()> openHelperSettings;
  std::function<void()> resetHelper;
  std::function<void()> updateItself;
  std::function<void()> dismissSelfUpdate;
};

class DashboardBridge final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QQmlPropertyMap* page READ page CONSTANT)
  Q_PROPERTY(QAbstractListModel* rows READ rows CONSTANT)
  Q_PROPERTY(QString windowTitle READ windowTitle WRITE setWindowTitle NOTIFY windowTitleChanged)
  Q_PROPERTY(QString statusSectionTitle READ statusSectionTitle CONSTANT)

 public:
  explicit DashboardBridge(DashboardActions actions, QObject* parent = nullptr);

  // Hands QML the fields that differ from the page before.
  void setPage(const DashboardPage& page);
  void setWindowTitle(const QString& title);

  [[nodiscard]] QQmlPropertyMap* page() { return &map_; }
  [[nodiscard]] QAbstractListModel* rows() { return &rows_; }
  [[nodiscard]] QString windowTitle() const { return windowTitle_; }
  [[nodiscard]] QString statusSectionTitle() const;

  Q_INVOKABLE void discoverInstalledApps() { actions_.discoverInstalledApps(); }
  Q_INVOKABLE void checkForUpdates() { actions_.checkForUpdates(); }
  Q_INVOKABLE void updateAll() {
    if (actions_.updateAll) actions_.updateAll();
  }
  Q_INVOKABLE void updateApp(const QString& label) { actions_.updateApp(label.toStdString()); }
  Q_INVOKABLE void recheck(const QString& label) { actions_.recheck(label.toStdString()); }
  Q_INVOKABLE void recheckAll() { actions_.recheckAll(); }
  Q_INVOKABLE void toggleHistory(const QString& label) { actions_.toggleHistory(label.toStdString()); }
  Q_INVOKABLE void setFilter(const QString& mode) { actions_.setFilter(mode.toStdString()); }
  Q_INVOKABLE void setUpHelper() { actions_.setUpHelper(); }
  Q_INVOKABLE void openHelperSettings() { actions_.openHelperSettings(); }
  Q_INVOKABLE void resetHelper() { actions_.resetHelper(); }
  Q_INVOKABLE void updateItself() {
    if (actions_.updateItself) actions_.updateItself();
  }
  Q_INVOKABLE void dismissSelfUpdate() { actions_.dismissSelfUpdate(); }

 Q_SIGNALS:
  void windowTitleChanged();

 private:
  DashboardActions actions_;
  DashboardPage shown_;
  bool everShown_ = false;
  QQmlPropertyMap map_;
  RowListModel<AppStatusRow> rows_;
  QString windowTitle_;
};

}  // namespace corvane::ui
