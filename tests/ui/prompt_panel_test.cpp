#include "ui/prompt_panel.h"

#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include "ui/page_engine.h"
#include "ui/prompt_states.h"

namespace corvane::ui {
namespace {

class PromptPanelTest : public ::testing::Test {
 protected:
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
  PromptBridge bridge_{{.select = [this](std::int64_t minutes) { heard_ += "select:" + std::to_string(minutes) + " "; },
                        .defer = [this] { heard_ += "defer "; },
                        .install = [this] { heard_ += "install "; },
                        .accept = [this] { heard_ += "accept "; },
                        .decline = [this] { heard_ += "decline "; },
                        .close = [this] { heard_ += "close "; }}};
  PromptPanel panel_{bridge_};
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
