// The dashboard's window over its bridge: made when first shown, drawn into a picture on request.
#pragma once

#include <QImage>
#include <QQmlApplicationEngine>
#include <memory>

#include "ui/dashboard_bridge.h"
#include "ui/desktop_appearance.h"

class QQuickWindow;

namespace corvane::ui {

class DashboardWindow {
 public:
  // Fails to be made only by a fault of ours; `ok` tells.
  explicit DashboardWindow(DashboardBridge& bridge);
  ~DashboardWindow();
  DashboardWindow(const DashboardWindow&) = delete;
  DashboardWindow& operator=(const DashboardWindow&) = delete;

  [[nodiscard]] bool ok() const { return window_ != nullptr; }
  void show();
  void resize(int width, int height);
  void setAppearance(const Appearance& appearance);
  // What the window shows now.
  [[nodiscard]] QImage grab();
  [[nodiscard]] QQuickWindow* window() { return window_; }

 private:
  QQmlApplicationEngine engine_;
  QQuickWindow* window_ = nullptr;
};

}  // namespace corvane::ui
