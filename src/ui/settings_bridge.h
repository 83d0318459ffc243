// The settings window's page as QML reads it, and its actions as QML calls them. Decides nothing.
#pragma once

#include <QObject>
#include <QString>
#include <map>
#include <string>

#include "presentation/settings_page.h"
#include "ui/page_map.h"
#include "ui/prompt_bridge.h"

namespace corvane::ui {

// Main thread.
class SettingsBridge final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QQmlPropertyMap* page READ page CONSTANT)
  Q_PROPERTY(QAbstractListModel* sections READ sections CONSTANT)
  Q_PROPERTY(corvane::ui::PromptBridge* prompt READ prompt CONSTANT)

 public:
  // Both outlive it.
  SettingsBridge(SettingsActions& actions, PromptBridge& prompt, QObject* parent = nullptr)
      : QObject(parent), actions_(actions), prompt_(prompt) {}

  // Hands QML what differs from the page before; a control that stays is changed in place.
  void setPage(const SettingsPage& page);

  [[nodiscard]] QQmlPropertyMap* page() { return map_.fields(); }
  [[nodiscard]] QAbstractListModel* sections() { return map_.rows(); }
  [[nodiscard]] PromptBridge* prompt() const { return &prompt_; }

  // The controls of a section of the page; null when there is none of that key.
  Q_INVOKABLE QAbstractListModel* controls(const QString& section) const;

  Q_INVOKABLE void selectTab(const QString& key) { actions_.selectTab(key.toStdString()); }
  Q_INVOKABLE void set(const QString& key, const QString& value) {
    actions_.set(key.toStdString(), value.toStdString());
  }
  Q_INVOKABLE void step(const QString& key, int steps) { actions_.step(key.toStdString(), steps); }
  Q_INVOKABLE void switchOn(const QString& key, bool on) { actions_.switchOn(key.toStdString(), on); }
  Q_INVOKABLE void reveal(const QString& key, bool revealed) { actions_.reveal(key.toStdString(), revealed); }
  Q_INVOKABLE void press(const QString& key) { actions_.press(key.toStdString()); }
  Q_INVOKABLE void answer(bool yes) { actions_.answer(yes); }
  Q_INVOKABLE void save() { actions_.save(); }

 private:
  SettingsActions& actions_;
  PromptBridge& prompt_;
  PageMap<SettingsPage, SettingsSection> map_;
  std::map<std::string, RowListModel<SettingsControl>*> controls_;  // by section; the bridge is their parent
};

}  // namespace corvane::ui
