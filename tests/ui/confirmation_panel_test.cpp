#include "ui/floating_panel.h"

#include "ui/confirmation_bridge.h"
#include "ui/window_fixture.h"

namespace corvane::ui {
namespace {

struct ConfirmationPanelTest : WindowTest {
  void ask() {
    bridge_.setPage(makeConfirmationPage(12, PageTexts{AppDisplayTitle("Corvane")}));
    ASSERT_TRUE(panel_.show());
    draw();
  }
  QQuickWindow* window() final { return panel_.window(); }

  ConfirmationBridge bridge_{{.accept = [this] { heard_ += "yes "; }, .decline = [this] { heard_ += "no "; }}};
  FloatingPanel panel_{kConfirmationPanel, bridge_};
};

TEST_F(ConfirmationPanelTest, floatsAboveOthersAndTellsItsCountdown) {
  ask();
  EXPECT_EQ(window()->size(), QSize(480, 220));
  EXPECT_TRUE(window()->flags() & Qt::WindowStaysOnTopHint);
  EXPECT_EQ(item("confirmationCountdown")->property("text").toString(),
            "Yes will be selected automatically in 0:00:12.");
}

TEST_F(ConfirmationPanelTest, returnIsAYesAndEscapeOrAClosedWindowANo) {
  ask();
  press(Qt::Key_Return);
  press(Qt::Key_Escape);
  window()->close();
  EXPECT_EQ(heard_, "yes no no ");
  EXPECT_TRUE(window()->isVisible()) << "the answer hides it";
}

TEST_F(ConfirmationPanelTest, aNewQuestionHasItsDefaultButtonAgain) {
  ask();
  focus(item("confirmationNo"));
  panel_.hide();
  bridge_.setPage({});
  ask();
  EXPECT_TRUE(item("confirmationYes")->hasActiveFocus());
}

}  // namespace
}  // namespace corvane::ui
