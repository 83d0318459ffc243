// A small window of its own: made at its first showing, kept, above other windows on every workspace, and always where
// somebody can see it.
#pragma once

#include <QObject>
#include <QQmlApplicationEngine>
#include <QString>
#include <memory>

#include "ui/desktop_appearance.h"

class QQuickWindow;

namespace corvane::ui {

// The pages that are made for it.
inline constexpr const char* kPromptPanel = "PromptPanel";              // over a PromptBridge
inline constexpr const char* kConfirmationPanel = "ConfirmationPanel";  // over a ConfirmationBridge

// Main thread.
class FloatingPanel final : public QObject {
  Q_OBJECT

 public:
  // Shows "<page>.qml" over the bridge, which outlives it.
  FloatingPanel(const char* page, QObject& bridge) : page_(QString::fromLatin1(page)), bridge_(bridge) {}
  ~FloatingPanel() override;

  // Centres it unless it stands already, brings it to the front and gives it the keyboard. False only by a fault of
  // ours.
  bool show();
  void hide();
  void setAppearance(const Appearance& appearance);
  [[nodiscard]] QQuickWindow* window() { return window_; }

 private:
  bool make();
  void centre();
  void comeBackToAScreen();

  QString page_;
  QObject& bridge_;
  Appearance appearance_;
  std::unique_ptr<QQmlApplicationEngine> engine_;
  QQuickWindow* window_ = nullptr;
};

}  // namespace corvane::ui
