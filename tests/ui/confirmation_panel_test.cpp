#include "ui/floating_panel.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include "support/test.h"
#include "ui/confirmation_bridge.h"
#include "ui/page_engine.h"

namespace corvane::ui {
namespace {

struct ConfirmationPanelTest : ::testing::Test {
  void ask() {
    bridge_.setPage(makeConfirmationPage(12, PageTexts{AppDisplayTitle("Corvane")}));
    ASSERT_TRUE(panel_.show());
    draw();
  }
  void draw() {
    QCoreApplication::processEvents();
    (void)grabWhole(*panel_.window());
  }
  QQuickItem* item(const char* name) { return panel_.window()->findChild<QQuickItem*>(name); }

  std::string heard_;
  ConfirmationBridge bridge_{{.accept = [this] { heard_ += "yes "; }, .decline = [this] { heard_ += "no "; }}};
  FloatingPanel panel_{kConfirmationPanel, bridge_};
};

TEST_F(ConfirmationPanelTest, floatsAboveOthersAndTellsItsCountdown) {
  ask();
  EXPECT_EQ(panel_.window()->size(), QSize(480, 220));
  EXPECT_TRUE(panel_.window()->flags() & Qt::WindowStaysOnTopHint);
  EXPECT_EQ(item("confirmationCountdown")->property("text").toString(),
            "Yes will be selected automatically in 0:00:12.");
}

TEST_F(ConfirmationPanelTest, returnIsAYesAndEscapeOrAClosedWindowANo) {
  ask();
  QTest::keyClick(panel_.window(), Qt::Key_Return);
  QTest::keyClick(panel_.window(), Qt::Key_Escape);
  panel_.window()->close();
  EXPECT_EQ(heard_, "yes no no ");
  EXPECT_TRUE(panel_.window()->isVisible()) << "the answer hides it";
}

TEST_F(ConfirmationPanelTest, aNewQuestionHasItsDefaultButtonAgain) {
  ask();
  item("confirmationNo")->forceActiveFocus(Qt::TabFocusReason);
  panel_.hide();
  bridge_.setPage({});
  ask();
  EXPECT_TRUE(item("confirmationYes")->hasActiveFocus());
}

}  // namespace
}  // namespace corvane::ui
