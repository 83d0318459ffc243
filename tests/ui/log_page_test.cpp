#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtTest>
#include <algorithm>
#include <string>
#include <utility>

#include "pictures/log_states.h"
#include "pictures/page_states.h"
#include "presentation/shortcuts_sheet.h"
#include "ui/dashboard_window.h"

namespace corvane::ui {
namespace {

struct LogPageTest : ::testing::Test {
  LogPageTest() {
    bridge_.setShortcuts(makeShortcutsSheet(PageTexts(AppDisplayTitle(CorvaneConfiguration()))));
    bridge_.setPage(ordinaryState().page());
    const auto states = allLogStates();
    const auto& logs = *std::ranges::find(states, std::string("logs"), &LogState::name);
    logs_.setPage(logs.page);
    logs_.setRows(logs.rows, Calendar::utc());
    window_.setAppearance({.dark = false, .reducedMotion = true});
    window_.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window_.window()));
  }
  template <class T = QQuickItem>
  T* named(const char* name) {
    return window_.window()->findChild<T*>(QLatin1String(name));
  }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(window_.window(), key, modifiers);
    QCoreApplication::processEvents();
  }
  [[nodiscard]] std::string heard() { return std::exchange(heard_, {}); }

  std::string heard_;
  PromptBridge prompt_{{}};
  LogBridge logs_{{.refresh = [this] { heard_ += "refresh "; },
                   .clear = [this] { heard_ += "clear "; },
                   .setLevel = [this](const std::string& level) { heard_ += "level:" + level + " "; },
                   .setSearch = [this](const std::string& text) { heard_ += "search:" + text + " "; }}};
  DashboardBridge bridge_{{.checkForUpdates = [this] { heard_ += "check "; }}, prompt_, &logs_};
  DashboardWindow window_{bridge_};
};

TEST_F(LogPageTest, theKeysOfThePagesMeanThePageInFront) {
  press(Qt::Key_F5);
  EXPECT_EQ(heard(), "check ");
  press(Qt::Key_2, Qt::ControlModifier);
  EXPECT_EQ(heard(), "refresh ") << "the logs are read whenever their page appears";
  press(Qt::Key_F5);
  EXPECT_EQ(heard(), "refresh ");
  press(Qt::Key_F, Qt::ControlModifier);
  press(Qt::Key_A);
  press(Qt::Key_Asterisk);
  EXPECT_EQ(heard(), "search:a search:a* ") << "as it is typed";
  press(Qt::Key_1, Qt::ControlModifier);
  EXPECT_EQ(bridge_.selectedSection(), QStringLiteral("status"));
}

TEST_F(LogPageTest, anEntryIsChosenByTheKeyboardAndCopiedWhole) {
  press(Qt::Key_2, Qt::ControlModifier);
  auto* entries = named("logEntries");
  ASSERT_NE(entries, nullptr);
  entries->forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Home);
  press(Qt::Key_Down);
  press(Qt::Key_C, Qt::ControlModifier);
  const auto copied = QGuiApplication::clipboard()->text();
  const auto message = logs_.row(1).toMap()[QStringLiteral("message")].toString();
  EXPECT_EQ(entries->property("current").toInt(), 1);
  EXPECT_TRUE(!message.isEmpty() && copied.endsWith(message)) << copied.toStdString();
}

TEST_F(LogPageTest, theSheetOfShortcutsOpensByItsKeysAndClosesByEscape) {
  auto* sheet = named<QObject>("shortcutsSheet");
  ASSERT_NE(sheet, nullptr);
  press(Qt::Key_F1);
  EXPECT_TRUE(sheet->property("opened").toBool());
  press(Qt::Key_Escape);
  EXPECT_FALSE(sheet->property("opened").toBool());
  press(Qt::Key_Question, Qt::ControlModifier);
  EXPECT_TRUE(sheet->property("opened").toBool());
}

}  // namespace
}  // namespace corvane::ui
