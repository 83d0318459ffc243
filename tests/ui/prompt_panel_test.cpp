#include "ui/floating_panel.h"

#include "pictures/prompt_states.h"
#include "ui/heard_prompt.h"
#include "ui/window_fixture.h"

namespace corvane::ui {
namespace {

struct PromptPanelTest : WindowTest {
  void show(const DeferralPromptPage& page) {
    bridge_.setPage(page);
    ASSERT_TRUE(panel_.show());
    draw();
  }
  QQuickWindow* window() final { return panel_.window(); }

  PromptBridge bridge_{heardBy(heard_)};
  FloatingPanel panel_{kPromptPanel, bridge_};
};

TEST_F(PromptPanelTest, isAsHighAsItsRowsUpToFourAndFloatsAboveOthers) {
  show(promptPage(1));
  const auto one = window()->height();
  show(promptPage(4));
  const auto four = window()->height();
  EXPECT_EQ(four - one, 3 * 56);
  show(promptPage(12));
  EXPECT_EQ(window()->height(), four);
  EXPECT_EQ(window()->width(), 480);
  EXPECT_TRUE(window()->flags() & Qt::WindowStaysOnTopHint);
}

TEST_F(PromptPanelTest, aCloseIsOnlyAskedForAndAHardPromptHasNoButtonForIt) {
  show(promptPage(2));
  EXPECT_TRUE(window()->flags() & Qt::WindowCloseButtonHint);
  window()->close();
  EXPECT_TRUE(window()->isVisible()) << "the model hides it";
  press(Qt::Key_Escape);
  EXPECT_EQ(heard_, "close close ");
  auto hard = promptPage(2, DeferralEscalation::hard);
  hard.mayClose = false;
  show(hard);
  EXPECT_FALSE(window()->flags() & Qt::WindowCloseButtonHint);
  panel_.hide();
  EXPECT_FALSE(window()->isVisible());
}

TEST_F(PromptPanelTest, escapeAnswersTheQuestionThatStandsInThePromptsPlaceAndItsWindowFits) {
  auto page = promptPage(4);
  show(page);
  const auto high = window()->height();
  page.confirmation = makeConfirmationPage(12, PageTexts{AppDisplayTitle("Corvane")});
  show(page);
  EXPECT_LT(window()->height(), high / 2);
  EXPECT_EQ(window()->minimumHeight(), window()->height());
  press(Qt::Key_Escape);
  EXPECT_EQ(heard_, "decline ");
  show(promptPage(4));
  EXPECT_EQ(window()->height(), high);
  press(Qt::Key_Return);
  EXPECT_EQ(heard_, "decline install ") << "the keyboard is back on the default button";
}

TEST_F(PromptPanelTest, aMinimisedPromptComesBack) {
  show(promptPage(1));
  window()->showMinimized();
  draw();
  EXPECT_EQ(window()->windowState(), Qt::WindowNoState);
  EXPECT_TRUE(window()->isVisible());
}

TEST_F(PromptPanelTest, eachPromptBeginsAtItsDefaultButton) {
  show(promptPage(1));
  focus(item("defer"));
  panel_.hide();
  auto gone = promptPage(1);
  gone.visible = false;
  bridge_.setPage(gone);
  show(promptPage(1));
  press(Qt::Key_Return);
  panel_.hide();
  bridge_.setPage(gone);
  auto other = promptPage(1);
  other.deferIsPrimary = true;
  show(other);
  press(Qt::Key_Return);
  EXPECT_EQ(heard_, "install defer ");
}

TEST_F(PromptPanelTest, theKeysMoveAListThatScrolls) {
  show(promptPage(12));
  auto* list = item("promptList");
  focus(list);
  const auto at = [&](Qt::Key key) {
    press(key);
    return list->property("contentY").toInt();
  };
  EXPECT_EQ(at(Qt::Key_Down), 56);
  EXPECT_EQ(at(Qt::Key_PageDown), 4 * 56);
  EXPECT_EQ(at(Qt::Key_Up), 3 * 56);
  EXPECT_EQ(at(Qt::Key_End), 8 * 56);
  EXPECT_EQ(at(Qt::Key_Down), 8 * 56);
  EXPECT_EQ(at(Qt::Key_Home), 0);
}

TEST_F(PromptPanelTest, theChosenLengthIsTold) {
  show(promptPage(1));
  focus(item("reminderPicker"));
  press(Qt::Key_Down);
  EXPECT_EQ(heard_, "select:120 ");
}

}  // namespace
}  // namespace corvane::ui
