// The settings window over its bridge.
#pragma once

#include <QImage>
#include <QObject>
#include <QQmlApplicationEngine>

#include "ui/desktop_appearance.h"
#include "ui/settings_bridge.h"

class QQuickWindow;

namespace corvane::ui {

// Main thread.
class SettingsWindow final : public QObject {
  Q_OBJECT

 public:
  // The bridge outlives it. Fails to be made only by a fault of ours; `ok` tells.
  explicit SettingsWindow(SettingsBridge& bridge);
  ~SettingsWindow() override;

  [[nodiscard]] bool ok() const { return window_ != nullptr; }
  // Brings it to the front and gives it the keyboard.
  void show();
  void setAppearance(const Appearance& appearance);
  // What the window shows now.
  [[nodiscard]] QImage grab();
  [[nodiscard]] QQuickWindow* window() { return window_; }

 Q_SIGNALS:
  // Its user closed it. It may be deleted later, not in the call.
  void closed();

 private:
  QQmlApplicationEngine engine_;
  QQuickWindow* window_ = nullptr;
};

}  // namespace corvane::ui
