// A window as a person works it: clicked, typed at and listened to.
#pragma once

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include "support/test.h"
#include "ui/page_engine.h"

namespace corvane::ui {

class WindowTest : public ::testing::Test {
 protected:
  // The one under test, once it has been made.
  virtual QQuickWindow* window() = 0;

  // Shows a window of the application and waits until it has the keyboard.
  template <class Window>
  void open(Window& opened) {
    opened.setAppearance({.reducedMotion = true});
    opened.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(opened.window()));
    draw();
  }
  void draw() {
    QCoreApplication::processEvents();
    (void)grabWhole(*window());
  }
  // The first one by that name; absent when it cannot be seen.
  QQuickItem* item(const std::string& name, QQuickItem* within = nullptr) {
    if (within == nullptr) within = window()->contentItem();
    if (!within->isVisible()) return nullptr;
    if (within->objectName().toStdString() == name) return within;
    for (auto* child : within->childItems())
      if (auto* found = item(name, child)) return found;
    return nullptr;
  }
  void focus(QQuickItem* target) {
    ASSERT_NE(target, nullptr);
    target->forceActiveFocus(Qt::TabFocusReason);
    draw();
  }
  void click(QQuickItem* target) {
    ASSERT_NE(target, nullptr);
    QTest::mouseClick(window(), Qt::LeftButton, {},
                      target->mapToScene(QPointF(target->width() / 2, target->height() / 2)).toPoint());
    draw();
  }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(window(), key, modifiers);
    draw();
  }
  // What was asked for since the last look.
  [[nodiscard]] std::string heard() { return std::exchange(heard_, {}); }

  std::string heard_;
};

}  // namespace corvane::ui
