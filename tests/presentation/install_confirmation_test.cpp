#include "presentation/install_confirmation_controller.h"

#include "workflow/workflow_fixture.h"

namespace corvane {
namespace {

struct InstallConfirmationTest : WorkflowTest {
  InstallConfirmationTest() {
    buildWith({outdated("a")});
    confirmation = std::make_unique<InstallConfirmationController>(*model, services);
  }
  void ask(const std::string& name = "") {
    confirmation->show([this, name] { heard += "yes" + name + " "; }, [this, name] { heard += "no" + name + " "; });
  }
  [[nodiscard]] const ConfirmationPage& page() const { return confirmation->page(); }

  std::string heard;
  std::unique_ptr<InstallConfirmationController> confirmation;
};

TEST_F(InstallConfirmationTest, silenceIsAYesAtTheEndOfItsCountdown) {
  ask();
  EXPECT_EQ(page().countdown, "Yes will be selected automatically in 0:00:15.");
  advance(14s);
  EXPECT_EQ(page().countdown, "Yes will be selected automatically in 0:00:01.");
  EXPECT_EQ(heard, "");
  advance(1s);
  EXPECT_EQ(heard, "yes ");
  EXPECT_FALSE(page().visible);
  confirmation->accept();
  confirmation->decline();
  advance(1h);
  EXPECT_EQ(heard, "yes ") << "one answer";
}

TEST_F(InstallConfirmationTest, aNoEndsTheCountdownAndAnotherQuestionTakesThePlaceOfTheFirst) {
  ask();
  confirmation->decline();
  advance(1h);
  EXPECT_EQ(heard, "no ");
  ask(" first");
  advance(10s);
  ask(" second");
  EXPECT_EQ(page().countdown, "Yes will be selected automatically in 0:00:15.");
  advance(14s);
  EXPECT_EQ(heard, "no ");
  advance(1s);
  EXPECT_EQ(heard, "no yes second ");
}

TEST_F(InstallConfirmationTest, anAnswerFindsThePageGoneAndMayAskAgain) {
  std::string pages;
  const auto told = confirmation->observe([&] { pages += page().visible ? "shown " : "gone "; });
  confirmation->show([&] { ask(); }, [] {});
  confirmation->accept();
  EXPECT_EQ(pages, "shown gone shown ");
  EXPECT_EQ(confirmation->question(), 2);
  confirmation->decline();
  EXPECT_EQ(heard, "no ");
}

TEST_F(InstallConfirmationTest, updateAllOfTheMenuBarStartsOnlyOnAYes) {
  confirmation->confirmUpdateAll();
  confirmation->decline();
  EXPECT_FALSE(fields().updateAll.userRecheckInFlight);
  confirmation->confirmUpdateAll();
  confirmation->accept();
  EXPECT_TRUE(fields().updateAll.userRecheckInFlight);
  EXPECT_EQ(log.count("Menu bar Update All — rechecking a."), 1U);
  EXPECT_EQ(log.count("InstallConfirmation: Update All confirmed from the menu bar."), 1U);
}

}  // namespace
}  // namespace corvane
