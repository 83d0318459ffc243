// The settings window in time: opened, brought to the front, closed with what was not saved, and opened again.
#include "ui/settings_surface.h"

#include <QQuickWindow>
#include <QTest>

#include "platform/scripted/scripted_user_notifications.h"
#include "ui/heard_prompt.h"
#include "workflow/workflow_fixture.h"

namespace corvane::ui {
namespace {

struct QuietTelemetry final : TelemetrySwitch {
  [[nodiscard]] bool started() const override { return false; }
  void start() override {}
  void stop() override {}
};

struct SettingsSurfaceTest : WorkflowTest {
  SettingsSurfaceTest() {
    build();
    surface_.emplace(*model, services, SettingsParts{telemetry_, center_, bundle}, prompt_);
    surface_->setAppearance({.dark = true, .reducedMotion = true});
  }
  QQuickWindow* open() {
    surface_->open();
    draw();
    return surface_->window() == nullptr ? nullptr : surface_->window()->window();
  }
  void close() {
    surface_->window()->window()->close();
    draw();
  }
  void draw() {
    QCoreApplication::processEvents();
    settle();
  }
  SettingsBridge& bridge() {
    return *qobject_cast<SettingsBridge*>(surface_->window()->window()->property("bridge").value<QObject*>());
  }
  void edit() {
    bridge().selectTab(QStringLiteral("deferrals"));
    draw();
    bridge().step(QStringLiteral("DeferralTimerDefault"), 1);
    draw();
    EXPECT_TRUE(hasEdits());
  }
  [[nodiscard]] bool hasEdits() { return bridge().page()->value(QStringLiteral("hasEdits")).toBool(); }
  static bool isDark(const QQuickWindow& window) {
    return window.property("theme").value<QObject*>()->property("dark").toBool();
  }

  QuietTelemetry telemetry_;
  ScriptedUserNotifications center_{time.main()};
  std::string promptHeard_;
  PromptBridge prompt_{heardBy(promptHeard_)};
  std::optional<SettingsSurface> surface_;
};

TEST_F(SettingsSurfaceTest, aWindowThatIsOpenComesToTheFrontAsItWasLeft) {
  auto* window = open();
  ASSERT_NE(window, nullptr);
  ASSERT_TRUE(QTest::qWaitForWindowActive(window));
  EXPECT_TRUE(isDark(*window));
  edit();

  QQuickWindow other;
  other.show();
  other.requestActivate();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
  EXPECT_EQ(open(), window);
  EXPECT_TRUE(QTest::qWaitForWindowActive(window));
  EXPECT_TRUE(hasEdits());

  window->showMinimized();
  draw();
  EXPECT_NE(surface_->window(), nullptr) << "a minimised window is not a closed one";
  EXPECT_EQ(open(), window);
  EXPECT_FALSE(window->windowStates() & Qt::WindowMinimized);
  window->showMaximized();
  draw();
  EXPECT_EQ(open(), window);
  EXPECT_TRUE(window->windowStates() & Qt::WindowMaximized) << "it keeps the size that its user gave it";
}

TEST_F(SettingsSurfaceTest, closingDropsWhatWasNotSavedAndTheNextShowsWhatIsStored) {
  ASSERT_NE(open(), nullptr);
  edit();
  close();
  EXPECT_EQ(surface_->window(), nullptr);
  advance(SettingsController::kLook * 3);
  surface_->setAppearance({.reducedMotion = true});

  auto* again = open();
  ASSERT_NE(again, nullptr);
  EXPECT_FALSE(isDark(*again));
  EXPECT_FALSE(hasEdits());

  // Closed and opened again before the loop comes round.
  again->close();
  surface_->open();
  draw();
  ASSERT_NE(surface_->window(), nullptr);
  EXPECT_TRUE(surface_->window()->window()->isVisible());

  close();
  open();
  surface_->window()->window()->close();
  surface_.reset();  // with the turn still to come that would drop the window
  draw();
}

}  // namespace
}  // namespace corvane::ui
