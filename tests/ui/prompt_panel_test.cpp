#include "ui/floating_panel.h"

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include "pictures/prompt_states.h"
#include "support/test.h"
#include "ui/heard_prompt.h"
#include "ui/page_engine.h"

namespace corvane::ui {
namespace {

struct PromptPanelTest : ::testing::Test {
  void show(const DeferralPromptPage& page) {
    bridge_.setPage(page);
    ASSERT_TRUE(panel_.show());
    draw();
  }
  void draw() {
    QCoreApplication::processEvents();
    (void)grabWhole(*panel_.window());
  }

  std::string heard_;
  PromptBridge bridge_{heardBy(heard_)};
  FloatingPanel panel_{kPromptPanel, bridge_};
};

TEST_F(PromptPanelTest, isAsHighAsItsRowsUpToFourAndFloatsAboveOthers) {
  show(promptPage(1));
  const auto one = panel_.window()->height();
  show(promptPage(4));
  const auto four = panel_.window()->height();
  EXPECT_EQ(four - one, 3 * 56);
  show(promptPage(12));
  EXPECT_EQ(panel_.window()->height(), four);
  EXPECT_EQ(panel_.window()->width(), 480);
  EXPECT_TRUE(panel_.window()->flags() & Qt::WindowStaysOnTopHint);
}

TEST_F(PromptPanelTest, aCloseIsOnlyAskedForAndAHardPromptHasNoButtonForIt) {
  show(promptPage(2));
  EXPECT_TRUE(panel_.window()->flags() & Qt::WindowCloseButtonHint);
  panel_.window()->close();
  EXPECT_TRUE(panel_.window()->isVisible()) << "the model hides it";
  QTest::keyClick(panel_.window(), Qt::Key_Escape);
  EXPECT_EQ(heard_, "close close ");
  auto hard = promptPage(2, DeferralEscalation::hard);
  hard.mayClose = false;
  show(hard);
  EXPECT_FALSE(panel_.window()->flags() & Qt::WindowCloseButtonHint);
  panel_.hide();
  EXPECT_FALSE(panel_.window()->isVisible());
}

TEST_F(PromptPanelTest, escapeAnswersTheQuestionThatStandsInThePromptsPlaceAndItsWindowFits) {
  auto page = promptPage(4);
  show(page);
  const auto high = panel_.window()->height();
  page.confirmation = makeConfirmationPage(12, PageTexts{AppDisplayTitle("Corvane")});
  show(page);
  EXPECT_LT(panel_.window()->height(), high / 2);
  EXPECT_EQ(panel_.window()->minimumHeight(), panel_.window()->height());
  QTest::keyClick(panel_.window(), Qt::Key_Escape);
  EXPECT_EQ(heard_, "decline ");
  show(promptPage(4));
  EXPECT_EQ(panel_.window()->height(), high);
  QTest::keyClick(panel_.window(), Qt::Key_Return);
  EXPECT_EQ(heard_, "decline install ") << "the keyboard is back on the default button";
}

TEST_F(PromptPanelTest, aMinimisedPromptComesBack) {
  show(promptPage(1));
  panel_.window()->showMinimized();
  draw();
  EXPECT_EQ(panel_.window()->windowState(), Qt::WindowNoState);
  EXPECT_TRUE(panel_.window()->isVisible());
}

TEST_F(PromptPanelTest, eachPromptBeginsAtItsDefaultButton) {
  show(promptPage(1));
  panel_.window()->findChild<QQuickItem*>("defer")->forceActiveFocus(Qt::TabFocusReason);
  panel_.hide();
  auto gone = promptPage(1);
  gone.visible = false;
  bridge_.setPage(gone);
  show(promptPage(1));
  QTest::keyClick(panel_.window(), Qt::Key_Return);
  panel_.hide();
  bridge_.setPage(gone);
  auto other = promptPage(1);
  other.deferIsPrimary = true;
  show(other);
  QTest::keyClick(panel_.window(), Qt::Key_Return);
  EXPECT_EQ(heard_, "install defer ");
}

TEST_F(PromptPanelTest, theKeysMoveAListThatScrolls) {
  show(promptPage(12));
  auto* list = panel_.window()->findChild<QQuickItem*>("promptList");
  ASSERT_NE(list, nullptr);
  list->forceActiveFocus(Qt::TabFocusReason);
  const auto at = [&](Qt::Key key) {
    QTest::keyClick(panel_.window(), key);
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
  auto* picker = panel_.window()->findChild<QQuickItem*>("reminderPicker");
  ASSERT_NE(picker, nullptr);
  picker->forceActiveFocus();
  QTest::keyClick(panel_.window(), Qt::Key_Down);
  EXPECT_EQ(heard_, "select:120 ");
}

}  // namespace
}  // namespace corvane::ui
