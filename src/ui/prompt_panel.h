// The prompt's own window: made at its first showing, kept, above other windows on every workspace, and always where
// somebody can see it.
#pragma once

#include <QImage>
#include <QObject>
#include <QQmlApplicationEngine>

#include "ui/desktop_appearance.h"
#include "ui/prompt_bridge.h"

class QQuickWindow;

namespace corvane::ui {

// Main thread.
class PromptPanel final : public QObject {
  Q_OBJECT

 public:
  explicit PromptPanel(PromptBridge& bridge) : bridge_(bridge) {}
  ~PromptPanel() override;

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

  PromptBridge& bridge_;
  Appearance appearance_;
  std::unique_ptr<QQmlApplicationEngine> engine_;
  QQuickWindow* window_ = nullptr;
};

}  // namespace corvane::ui
