#include "workflow/update_all_flow.h"

#include "workflow/hard_deadline_decision.h"
#include "workflow_fixture.h"

namespace corvane {
namespace {

struct UpdateAllTest : WorkflowTest {
  void set(const char* key, PlistValue value) { preferences.writePreference(key, std::move(value)); }
  void ask(const Apps& apps, DeferralPromptHost host = DeferralPromptHost::standalone) {
    model->updateAll(host);
    answer(apps);
  }
  [[nodiscard]] const DeferralFields& prompt() const { return fields().deferral; }
  [[nodiscard]] Labels pending() const { return fields().updateAll.pendingPatchLabels; }
  void expectInstalling(const Labels& labels) { EXPECT_THAT(running(), labels); }
};

TEST_F(UpdateAllTest, aRequestWhileSomethingRunsIsDropped) {
  buildWith({outdated("a")});
  model->checkForUpdates();
  model->updateAll(DeferralPromptHost::settings);
  EXPECT_TRUE(said("Skipping updateAll — another operation is already running"));
  EXPECT_EQ(prompt().deferralPromptHost, DeferralPromptHost::dashboard) << "left as it was";
}

TEST_F(UpdateAllTest, nothingPendingIsToldAndAsksNobody) {
  buildWith({current("a")});
  model->updateAll(DeferralPromptHost::dashboard);
  EXPECT_TRUE(said("Update All requested but no apps have updates available"));
  EXPECT_EQ(status(), "No applications currently require updates.");
  EXPECT_EQ(helper.discoveriesAsked, 0);
  model->updateAllFromMenuBar();
  EXPECT_TRUE(said("Menu bar Update All requested but no apps have updates available"));
}

TEST_F(UpdateAllTest, theQuestionComesAfterAFreshCheck) {
  buildWith({outdated("a"), outdated("b")});
  model->updateAll(DeferralPromptHost::standalone);
  EXPECT_TRUE(said("Rechecking 2 pending label(s) before the deferral prompt."));
  EXPECT_TRUE(fields().updateAll.userRecheckInFlight);
  EXPECT_FALSE(prompt().showDeferralPrompt);
  answer(Apps{current("a"), outdated("b")});
  EXPECT_FALSE(fields().updateAll.userRecheckInFlight);
  EXPECT_TRUE(said("Update All — checking deferral status"));
  EXPECT_TRUE(prompt().showDeferralPrompt);
  EXPECT_EQ(prompt().deferralPromptGeneration, 1);
  EXPECT_EQ(prompt().currentDeferralEscalation, DeferralEscalation::normal);
  EXPECT_EQ(prompt().selectedDeferralMinutes, 60);
  EXPECT_EQ(pending(), Labels{label("b")});
  EXPECT_EQ(prompts.shown, 1);
}

TEST_F(UpdateAllTest, aRecheckThatFindsEverythingCurrentCompletesTheCycle) {
  buildWith({outdated("a")});
  ask({current("a")});
  EXPECT_TRUE(said("Update All recheck found no apps that still need an update — completing the patching cycle."));
  EXPECT_EQ(status(), "No applications currently require updates.");
  EXPECT_EQ(preferences.readPatchingCadenceState().lastPatchingCompletionDate, time.now());
  EXPECT_FALSE(prompt().showDeferralPrompt);
}

TEST_F(UpdateAllTest, aCheckThatFailsForOneStillAsksForAllAndInstallsAll) {
  buildWith({outdated("a"), outdated("b"), outdated("c")});
  ask({outdated("a"), failedCheck("b"), outdated("c")});
  EXPECT_TRUE(said("The recheck could not confirm b; keeping it pending."));
  EXPECT_EQ(pending(), (Labels{label("a"), label("c"), label("b")}));
  EXPECT_EQ(model->deferralPromptApps().size(), 3U);
  model->installNow();
  EXPECT_TRUE(said("Rechecking 3 label(s) before installing."));
  answer(Apps{outdated("a"), failedCheck("b"), current("c")});
  EXPECT_TRUE(said("The recheck could not confirm b; installing anyway."));
  EXPECT_TRUE(said("Dropped c because a fresh check shows no update."));
  expectInstalling({label("a"), label("b")});
  EXPECT_FALSE(prompt().showDeferralPrompt);
  EXPECT_TRUE(pending().empty());
  EXPECT_TRUE(model->deferralEvents(label("a"), 5).front().eventType == DeferralEventType::installationStarted);
}

TEST_F(UpdateAllTest, aCompletedCycleInstallsWithoutAsking) {
  completeCycle();
  buildWith({outdated("b"), outdated("a")});
  model->refreshDeadlineDisplay();
  model->recomputeCounts();
  ASSERT_TRUE(fields().inventory.cycleCompletionMessage);
  ask({outdated("b"), outdated("a")});
  EXPECT_TRUE(said("Update All during a completed cycle — installing a, b without a deferral."));
  EXPECT_FALSE(prompt().showDeferralPrompt);
  expectInstalling({label("b"), label("a")});
}

TEST_F(UpdateAllTest, heldLabelsAreNotAskedAbout) {
  preferences.writePatchingCadenceState(
      {.currentPatchingStartDate = time.now() - 48h, .nextCycleStartDate = time.now() + 72h});
  fail("a", 3);
  buildWith({outdated("a"), outdated("b")});
  ask({outdated("b")});
  EXPECT_EQ(pending(), Labels{label("b")});
}

TEST_F(UpdateAllTest, labelsThatTheSettingsIgnoreMeanwhileAreDropped) {
  buildWith({outdated("a"), outdated("b")});
  ask({outdated("a"), outdated("b")});
  model->installNow();
  set("IgnoredLabels", PlistArray{PlistValue("a")});
  answer(Apps{outdated("a"), outdated("b")});
  EXPECT_TRUE(said("Dropped a because the current settings exclude it."));
  expectInstalling({label("b")});
}

TEST_F(UpdateAllTest, theMenuBarInstallsWhatWasConfirmed) {
  buildWith({outdated("b"), outdated("a")});
  model->updateAllFromMenuBar();
  EXPECT_TRUE(said("Menu bar Update All — rechecking a, b."));
  EXPECT_EQ(notices.told.front(), "dismissed");
  model->updateAllFromMenuBar();
  EXPECT_TRUE(said("Menu bar Update All is waiting for the current check to finish."));
  answer(Apps{outdated("b"), outdated("a")});
  expectInstalling({label("b"), label("a")});
}

TEST_F(UpdateAllTest, installNowWithNothingToInstallCompletesTheCycle) {
  buildWith({current("a")});
  model->installNow();
  EXPECT_TRUE(said("Install Now had no apps that still need an update — completing the patching cycle."));
  EXPECT_EQ(status(), "No applications currently require updates.");
}

TEST_F(UpdateAllTest, installNowTwiceWhileBusyInstallsOnce) {
  buildWith({outdated("a")});
  ask({outdated("a")});
  model->checkForUpdates();
  model->installNow();
  model->installNow();
  EXPECT_EQ(log.count("Install Now will run when the current check or install finishes."), 2U);
  EXPECT_TRUE(fields().updateAll.installNowQueued);
  answer(Apps{outdated("a")});
  EXPECT_FALSE(fields().updateAll.installNowQueued);
  EXPECT_EQ(log.count("Rechecking 1 label(s) before installing."), 1U);
  answer(Apps{outdated("a")});
  expectInstalling({label("a")});
}

TEST_F(UpdateAllTest, aQueuedInstallBelongsToItsPrompt) {
  for (const bool replaced : {false, true}) {
    SCOPED_TRACE(replaced ? "presented again" : "closed");
    buildWith({outdated("a")});
    ask({outdated("a")});
    model->checkForUpdates();
    model->installNow();
    if (replaced)
      model->presentDeferralPrompt();
    else
      model->closeDeferralPrompt();
    answer(Apps{outdated("a")});
    EXPECT_FALSE(fields().updateAll.installNowQueued);
    EXPECT_FALSE(fields().gate.isLoading);
    model.reset();
    helper.discoveries.clear();
  }
  EXPECT_EQ(log.count("before installing"), 0U);
}

struct HardDeadlineTest : UpdateAllTest {
  HardDeadlineTest() {
    set("DeadlineCountHard", PlistValue(1));
    set("HardDeferralCount", PlistValue(1));
  }
};

TEST_F(HardDeadlineTest, atNightTheShortCountdownRunsAndTheInstallIsRecordedAsForced) {
  manage({{"DialogTimeoutDeferral", 0}});
  buildWith({outdated("a")});
  ask({outdated("a")});
  EXPECT_EQ(prompt().currentDeferralEscalation, DeferralEscalation::hard);
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 1s);
  EXPECT_EQ(preferences.readLastHardDeadlineFiredAt(), time.now());
  EXPECT_TRUE(
      said("Hard deadline reached outside business hours — presenting required-update prompt with no further deferral "
           "and a 1-second enforcement countdown (DialogTimeoutDeferral)."));
  model->installNow();
  answer(Apps{outdated("a")});
  const auto events = model->deferralEvents(label("a"), 5);
  ASSERT_EQ(events.size(), 2U);
  EXPECT_TRUE(std::ranges::any_of(events, [](const auto& event) {
    return event.eventType == DeferralEventType::deadlineForced && !event.deferralMinutes && !event.escalation;
  }));
}

TEST(HardDeadlineDecision, theWindowAndWhatIsArmedDecide) {
  const auto calendar = Calendar::utc();
  const BusinessHoursGate day("09:00", "17:00", calendar);
  const auto midnight = VirtualMachine::kStart - 12h;
  const auto noon = midnight + 12h;
  const auto evening = midnight + 17h;
  const auto decide = [&](const BusinessHoursGate& gate, Date now, std::optional<Date> armed) {
    return decideHardDeadline({.now = now, .armed = armed, .timeoutSeconds = 300}, gate, calendar);
  };
  EXPECT_EQ(decide(day, noon, std::nullopt),
            (HardDeadlineDecision{.arm = evening,
                                  .logLine = "Hard deadline reached inside business hours — presenting "
                                             "required-update prompt and scheduling enforcement for "
                                             "2026-11-01T17:00:00+00:00."}));
  EXPECT_EQ(decide(day, noon, evening),
            (HardDeadlineDecision{.arm = std::nullopt,
                                  .logLine = "Hard deadline reached inside business hours — presenting "
                                             "required-update prompt; keeping the enforcement already armed for "
                                             "2026-11-01T17:00:00+00:00."}));
  EXPECT_EQ(decide(day, noon, evening + 1s).arm, evening) << "brought forward";
  EXPECT_EQ(decide(day, noon, noon).arm, evening) << "armed for now is not ahead";
  EXPECT_EQ(decide(day, evening, std::nullopt).arm, evening + 300s) << "the end is outside";
  EXPECT_EQ(decide(day, evening, evening + 10h),
            (HardDeadlineDecision{.arm = std::nullopt,
                                  .logLine = "Hard deadline reached outside business hours — presenting "
                                             "required-update prompt with no further deferral; keeping the "
                                             "enforcement deadline already armed for 2026-11-02T03:00:00+00:00."}));
  EXPECT_EQ(decide(BusinessHoursGate("09:00", std::nullopt, calendar), noon, std::nullopt).arm, noon + 300s)
      << "a disabled gate counts as outside";
}

}  // namespace
}  // namespace corvane
