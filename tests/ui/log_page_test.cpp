#include <QClipboard>
#include <QGuiApplication>

#include "pictures/log_states.h"
#include "pictures/page_states.h"
#include "presentation/shortcuts_sheet.h"
#include "ui/dashboard_window.h"
#include "ui/window_fixture.h"

namespace corvane::ui {
namespace {

struct LogPageTest : WindowTest {
  LogPageTest() {
    bridge_.setShortcuts(makeShortcutsSheet(PageTexts(AppDisplayTitle(CorvaneConfiguration()))));
    bridge_.setPage(ordinaryState().page());
    const auto states = allLogStates();
    const auto& logs = *std::ranges::find(states, std::string("logs"), &LogState::name);
    logs_.setPage(logs.page);
    logs_.setRows(logs.rows, Calendar::utc());
    open(window_);
  }
  QQuickWindow* window() final { return window_.window(); }

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
  auto* entries = item("logEntries");
  focus(entries);
  press(Qt::Key_Home);
  press(Qt::Key_Down);
  press(Qt::Key_C, Qt::ControlModifier);
  const auto copied = QGuiApplication::clipboard()->text();
  const auto message = logs_.row(1).toMap()[QStringLiteral("message")].toString();
  EXPECT_EQ(entries->property("current").toInt(), 1);
  EXPECT_TRUE(!message.isEmpty() && copied.endsWith(message)) << copied.toStdString();
}

TEST_F(LogPageTest, theSheetOfShortcutsOpensByItsKeysAndClosesByEscape) {
  auto* sheet = window()->findChild<QObject*>("shortcutsSheet");
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
