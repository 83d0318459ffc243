#include "presentation/deferral_prompt_controller.h"
#include "workflow/workflow_fixture.h"

namespace corvane {
namespace {

struct PromptTest : WorkflowTest {
  void ask(DeferralPromptHost host = DeferralPromptHost::standalone) {
    buildWith({outdated("a"), outdated("b")});
    prompt = std::make_unique<DeferralPromptController>(*model, services);
    askAgain(host);
  }
  void askAgain(DeferralPromptHost host = DeferralPromptHost::standalone) {
    model->updateAll(host);
    answer(Apps{outdated("a"), outdated("b")});
  }
  [[nodiscard]] const DeferralPromptPage& page() const { return prompt->page(); }
  [[nodiscard]] std::int64_t deferrals() const { return preferences.readDeferralInfo().hardDeferralCount; }
  [[nodiscard]] bool isRechecking() const { return fields().updateAll.userRecheckInFlight; }

  std::unique_ptr<DeferralPromptController> prompt;
};

TEST_F(PromptTest, asksAndCountsDownToTheConfiguredAnswer) {
  ask();
  EXPECT_TRUE(page().visible);
  EXPECT_EQ(page().host, "standalone");
  EXPECT_EQ(page().title, "Updates Available");
  EXPECT_EQ(page().subtitle, "2 applications ready to update.");
  EXPECT_EQ(page().symbol, "clock.badge.exclamationmark.fill");
  EXPECT_EQ(page().pickerLabel, "Remind me in:");
  ASSERT_EQ(page().options.size(), 4U);
  EXPECT_EQ(page().options[3].text, "1 day");
  EXPECT_EQ(page().reminderTime, "You will be asked again at 1:00\u202FPM.");
  EXPECT_EQ(page().countdown, "Corvane will automatically defer in 0:05:00.");
  EXPECT_EQ(page().rows.at(0).versions, "1.0 → 2.0");
  EXPECT_EQ(page().rows.at(0).behavior, "Closed. (Will update when updates are installed.)");
  EXPECT_EQ(page().install.text, "Update");
  EXPECT_TRUE(page().defer.visible && !page().deferIsPrimary && page().mayClose);
  advance(61s);
  EXPECT_EQ(page().countdown, "Corvane will automatically defer in 0:03:59.");
  EXPECT_EQ(page().reminderTime, "You will be asked again at 1:01\u202FPM.");
  advance(238s);
  EXPECT_EQ(deferrals(), 0);
  advance(1s);
  EXPECT_EQ(deferrals(), 1);
  EXPECT_FALSE(page().visible);
  advance(10min);
  EXPECT_EQ(deferrals(), 1) << "fires once";
}

TEST_F(PromptTest, theChoiceIsWordedAndCountedFromTheClick) {
  ask();
  prompt->select(1440);
  settle();
  EXPECT_EQ(page().selectedOption, 3);
  EXPECT_EQ(page().reminderTime, "You will be asked again tomorrow at 12:00\u202FPM.");
  locale.setZone("Asia/Tokyo");
  advance(100s);
  EXPECT_EQ(page().reminderTime, "You will be asked again tomorrow at 9:01\u202FPM.") << "the person has travelled";
  prompt->defer();
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 24h);
}

TEST_F(PromptTest, aConfirmationPausesTheCountdownAndNoBringsItBack) {
  ask();
  advance(293s);
  EXPECT_EQ(page().countdown, "Corvane will automatically defer in 0:00:07.");
  EXPECT_EQ(page().countdownColor, ColorRole::primary);
  prompt->install();
  EXPECT_TRUE(page().confirmation.visible);
  EXPECT_EQ(page().confirmation.countdown, "Yes will be selected automatically in 0:00:15.");
  advance(14s);
  EXPECT_EQ(deferrals(), 0) << "the prompt's own countdown stands still";
  EXPECT_EQ(page().confirmation.countdown, "Yes will be selected automatically in 0:00:01.");
  prompt->decline();
  EXPECT_FALSE(page().confirmation.visible);
  EXPECT_EQ(page().countdown, "Corvane will automatically defer in 0:00:07.");
  EXPECT_FALSE(isRechecking());
  advance(7s);
  EXPECT_EQ(deferrals(), 1);
}

TEST_F(PromptTest, noAnswerToTheConfirmationIsAYesOnce) {
  ask();
  prompt->install();
  advance(15s);
  EXPECT_TRUE(isRechecking());
  EXPECT_FALSE(page().confirmation.yes.enabled || page().confirmation.no.enabled);
  prompt->accept();
  prompt->decline();
  advance(10min);
  EXPECT_EQ(log.count("before installing"), 1U);
  answer(Apps{outdated("a"), outdated("b")});
  EXPECT_EQ(helper.runs.size(), 1U);
  EXPECT_FALSE(page().visible || page().confirmation.visible);
}

TEST_F(PromptTest, aPromptPresentedAgainDropsTheConfirmationAndStartsAnew) {
  ask();
  prompt->install();
  advance(10s);
  model->presentDeferralPrompt();
  prompt->accept();
  EXPECT_FALSE(isRechecking()) << "the yes was for another prompt";
  settle();
  EXPECT_FALSE(page().confirmation.visible);
  EXPECT_EQ(page().countdown, "Corvane will automatically defer in 0:05:00.");
  advance(10s);
  EXPECT_FALSE(isRechecking());
}

TEST_F(PromptTest, atHardThereIsNoWayBackAndNoQuestion) {
  preferences.writePreference("DeadlineCountHard", PlistValue(0));
  ask();
  EXPECT_EQ(page().title, "Updates required");
  EXPECT_EQ(page().subtitle, "Save your work, then update 2 applications now. Further deferral is unavailable.");
  EXPECT_EQ(page().explanation, "You have used every deferral.");
  EXPECT_EQ(page().countdown, "Updates will begin automatically in 0:05:00.");
  EXPECT_TRUE(page().options.empty() && page().pickerLabel.empty() && page().reminderTime.empty());
  EXPECT_FALSE(page().defer.visible || page().mayClose);
  EXPECT_EQ(page().install.text, "Update Now");
  prompt->close();
  EXPECT_TRUE(page().visible);
  prompt->install();
  EXPECT_TRUE(isRechecking());
  EXPECT_FALSE(page().confirmation.visible);
}

TEST_F(PromptTest, aClockSetBackForcesNothingBeforeItsMoment) {
  preferences.writePreference("DeadlineCountHard", PlistValue(0));
  ask();
  time.setWallClock(time.now() - 24h);
  advance(1h);
  EXPECT_FALSE(isRechecking());
  EXPECT_EQ(page().countdown, "Updates will begin automatically in 23:05:00.");
}

TEST_F(PromptTest, aClosedPromptHasNoCountdown) {
  ask();
  advance(100s);
  prompt->close();
  settle();
  EXPECT_FALSE(page().visible);
  advance(1h);
  EXPECT_EQ(deferrals(), 0);
  askAgain(DeferralPromptHost::dashboard);
  EXPECT_EQ(page().host, "dashboard");
  EXPECT_EQ(page().countdown, "Corvane will automatically defer in 0:05:00.");
}

}  // namespace
}  // namespace corvane
