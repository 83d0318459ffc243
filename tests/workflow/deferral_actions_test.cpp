#include "workflow/deferral_actions.h"

#include "workflow/deferral_options.h"
#include "workflow/deferral_texts.h"
#include "workflow_fixture.h"

namespace corvane {
namespace {

constexpr std::string_view kNarrowSpace = "\u202F";  // before AM and PM

struct DeferralTest : WorkflowTest {
  void set(const char* key, PlistValue value) { preferences.writePreference(key, std::move(value)); }
  void openPrompt(DeferralPromptHost host = DeferralPromptHost::standalone) {
    buildWith({outdated("a"), outdated("b")});
    model->updateAll(host);
    answer(Apps{outdated("a"), outdated("b")});
  }
  [[nodiscard]] const DeferralFields& prompt() const { return fields().deferral; }
};

TEST_F(DeferralTest, aDeferralCountsArmsAndIsWrittenDown) {
  openPrompt();
  model->setSelectedDeferralMinutes(120);
  model->deferUpdates(false);
  EXPECT_FALSE(prompt().showDeferralPrompt);
  EXPECT_EQ(prompts.hidden, 1);
  EXPECT_EQ(notices.told, std::vector<std::string>{"dismissed"});
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 1);
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 2h);
  EXPECT_EQ(status(), "Updates deferred for 2 hours.");
  const auto event = model->deferralEvents(label("b"), 1).at(0);
  EXPECT_EQ(event.eventType, DeferralEventType::userDeferred);
  EXPECT_EQ(event.deferralMinutes, 120);
  EXPECT_EQ(event.escalation, DeferralEscalation::normal);
  EXPECT_EQ(model->pendingWatchpoint(), PendingWatchpoint(watchpoint::DeferralReminder{time.now() + 2h}));
  EXPECT_EQ(model->watchpointCountdownText("2 hours"), "Deferred — you'll be reminded in 2 hours");
}

TEST_F(DeferralTest, aPromptThatStandsMovesToTheSurfaceThatAskedLast) {
  openPrompt(DeferralPromptHost::standalone);
  EXPECT_EQ(prompts.shown, 1);
  model->updateAll(DeferralPromptHost::dashboard);
  EXPECT_EQ(prompts.hidden, 1) << "while the recheck runs too";
  answer(Apps{outdated("a"), outdated("b")});
  EXPECT_EQ(prompts.shown, 1);
  model->updateAll(DeferralPromptHost::standalone);
  EXPECT_EQ(prompts.shown, 2);
}

TEST_F(DeferralTest, aLengthThatIsNoLongerOfferedFallsBackToTheFirst) {
  openPrompt();
  model->setSelectedDeferralMinutes(7);
  model->deferUpdates(false);
  EXPECT_EQ(prompt().selectedDeferralMinutes, 60);
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 1h);
}

TEST_F(DeferralTest, afterTheDeadlineADeferralIsRefusedAndThePromptComesBackHard) {
  set("DeadlineDaysHard", PlistValue(1));
  openPrompt();
  set("HardDeferralDate", PlistValue(time.now() - 1s));
  set("BusinessHoursStartTime", PlistValue("09:00"));
  set("BusinessHoursEndTime", PlistValue("17:00"));
  model->deferUpdates(false);
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 5h) << "where business hours end";
  EXPECT_EQ(preferences.readLastHardDeadlineFiredAt(), time.now());
  EXPECT_EQ(model->promptCountdownSeconds(), 5 * 60 * 60);
  EXPECT_EQ(status(), "The update deadline has passed.");
  EXPECT_EQ(prompt().currentDeferralEscalation, DeferralEscalation::hard);
  EXPECT_EQ(prompt().currentHardDeadlineDate, time.now() - 1s);
  EXPECT_TRUE(prompt().showDeferralPrompt);
  EXPECT_EQ(prompt().deferralPromptGeneration, 2);
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 0);
  EXPECT_EQ(model->hardDeadlineExplanation(), "The deadline date has passed.");
  EXPECT_EQ(model->deferralsRemainingSummary(), std::nullopt);
}

TEST_F(DeferralTest, withNoLengthLeftThePromptIsHardWithoutAWord) {
  set("DeadlineDaysHard", PlistValue(1));
  set("HardDeferralDate", PlistValue(time.now() + 30min));
  openPrompt();
  EXPECT_TRUE(model->availableDeferralOptions().empty());
  EXPECT_EQ(prompt().selectedDeferralMinutes, 60) << "the default stands in";
  model->deferUpdates(false);
  EXPECT_EQ(prompt().currentDeferralEscalation, DeferralEscalation::hard);
  EXPECT_NE(status(), "The update deadline has passed.");
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 300s);
  EXPECT_EQ(preferences.readLastHardDeadlineFiredAt(), std::nullopt) << "it is still ahead";
  EXPECT_TRUE(
      log.holds("StatusViewModel: No deferral length left outside business hours — presenting required-update prompt "
                "with no further deferral and a 300-second enforcement countdown (DialogTimeoutDeferral)."));
  EXPECT_EQ(log.count("Hard deadline reached"), 0);
}

TEST_F(DeferralTest, aCountdownThatRunsOutDefersAndSaysSoAfterwards) {
  openPrompt();
  model->dialogTimeoutElapsed();
  settle();
  EXPECT_TRUE(log.holds("StatusViewModel: Deferral dialog timeout elapsed — applying the configured defer action."));
  EXPECT_EQ(notices.told, (std::vector<std::string>{"dismissed", "timed out, 0 of 2 open"}));
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 1);
  model->dialogTimeoutElapsed();
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 1) << "a prompt that has gone has no countdown";
}

TEST_F(DeferralTest, aCountdownInstallsWhenSetTo) {
  manage({{"DialogTimeoutDeferralAction", "continue"}});
  openPrompt();
  model->dialogTimeoutElapsed();
  EXPECT_TRUE(log.holds("StatusViewModel: Deferral dialog timeout elapsed — continuing with updates."));
  EXPECT_TRUE(fields().updateAll.userRecheckInFlight);
}

TEST_F(DeferralTest, aHardPromptClosesOnlyWhereItMayAndWithSomethingArmed) {
  set("DeadlineCountHard", PlistValue(0));
  openPrompt();
  const auto enforcement = time.now() + 300s;
  ASSERT_EQ(preferences.readNextAutoLaunch(), enforcement);
  model->closeDeferralPrompt();
  EXPECT_TRUE(prompt().showDeferralPrompt) << "not allowed";
  manage({{"HardDeadlineDialogAllowClose", true}});
  preferences.clearNextAutoLaunch();
  model->closeDeferralPrompt();
  EXPECT_TRUE(prompt().showDeferralPrompt) << "nothing armed";
  preferences.writeNextAutoLaunch(enforcement, false, false);
  model->closeDeferralPrompt();
  EXPECT_FALSE(prompt().showDeferralPrompt);
  EXPECT_EQ(preferences.readHardDeadlineDialogDismissedUntil(), enforcement);
  EXPECT_EQ(preferences.readNextAutoLaunch(), enforcement);
  EXPECT_EQ(notices.told.back(), "reminders of 2");
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 0) << "closing is no deferral";
  EXPECT_EQ(model->watchpointCountdownText("4 minutes"), "Updates install automatically in 4 minutes");
  EXPECT_EQ(model->promptCountdownSeconds(), 300);
  model->presentDeferralPrompt();
  EXPECT_EQ(preferences.readHardDeadlineDialogDismissedUntil(), std::nullopt);
}

TEST_F(DeferralTest, focusDefersByItselfUntilALimitIsReached) {
  buildWith({outdated("a"), failedCheck("b")});
  focus.disturbed = true;
  EXPECT_FALSE(model->applyAutomaticFocusDeferralIfNeeded()) << "no focus limit is set";
  set("DeadlineCountFocus", PlistValue(1));
  EXPECT_TRUE(model->applyAutomaticFocusDeferralIfNeeded());
  EXPECT_TRUE(log.holds("FocusModeDetector: Do Not Disturb on, no display assertion"));
  EXPECT_TRUE(log.holds("StatusViewModel: Automatic focus deferral for 30 min. Dialog stays hidden."));
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 30min);
  EXPECT_TRUE(preferences.readAutomaticFocusDeferralArmed());
  EXPECT_EQ(model->deferralEvents(label("a"), 1).at(0).eventType, DeferralEventType::focusSuppressed);
  EXPECT_TRUE(model->deferralEvents(label("b"), 1).empty()) << "not pending";
  EXPECT_EQ(model->watchpointCountdownText("30 minutes"), "Focus deferral — checking again in 30 minutes");
  EXPECT_FALSE(model->applyAutomaticFocusDeferralIfNeeded()) << "something is armed";
  preferences.clearNextAutoLaunch();
  EXPECT_FALSE(model->applyAutomaticFocusDeferralIfNeeded()) << "the focus limit is reached";
}

TEST_F(DeferralTest, aDisplayNobodyCanTellOfHidesTheDialogForHalfAMinute) {
  set("DeadlineCountFocus", PlistValue(5));
  buildWith({outdated("a")});
  focus.holders = std::nullopt;
  for (int check = 1; check <= 2; ++check) {
    EXPECT_TRUE(model->applyAutomaticFocusDeferralIfNeeded());
    EXPECT_TRUE(prompt().focusRecheckSuppressedDialog);
    EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 30s);
    EXPECT_EQ(log.count("Display assertion check was inconclusive. Dialog stays hidden for 30 seconds."), check);
    advance(30s);
  }
  EXPECT_EQ(preferences.readDeferralInfo().focusDeferralCount, 0);
  EXPECT_TRUE(model->deferralEvents(label("a"), 1).empty());
}

TEST_F(DeferralTest, theRowsTellWhatAnInstallWillDo) {
  set("InstallomatorOptions", PlistValue("BLOCKING_PROCESS_ACTION=prompt_user"));
  set("RequiredLabels", PlistArray{PlistValue("missing")});
  auto opened = outdated("opened");
  opened.appPath = "/Applications/Opened.app";
  auto tool = outdated("tool");
  tool.packageID = "Org.Example.Tool";
  const auto missing = makeApp({.label = "missing", .installed = nullptr, .latest = "3.0"});
  buildWith({opened, tool, missing, outdated("other")});
  installFacts.known[label("tool")] = {.ownUpdateToolExists = true};
  processes.open("/Applications/Opened.app");
  processes.open("/Elsewhere/Tool.app", "org.example.tool");
  const auto rows = model->deferralPromptApps();
  ASSERT_EQ(rows.size(), 4U);
  EXPECT_EQ(rows[0].behavior, DeferralInstallBehavior::askedToQuit);
  EXPECT_EQ(rows[1].behavior, DeferralInstallBehavior::ownUpdateTool);
  EXPECT_EQ(rows[2].currentVersion, "Not installed");
  EXPECT_EQ(rows[3].behavior, DeferralInstallBehavior::updatesWhenInstalled);
  processes.setReadable(false);
  EXPECT_EQ(model->deferralPromptApps()[3].behavior, DeferralInstallBehavior::askedToQuit);
  EXPECT_TRUE(
      log.holds("StatusViewModel: Could not enumerate running processes; treating all 4 pending update(s) as open apps "
                "the user has to act on."));
}

TEST_F(DeferralTest, closedAppsArePatchedWhereSettingsAndPowerLetThem) {
  set("BackgroundPatchClosedAppsRequireOnAC", PlistValue(true));
  auto opened = outdated("opened");
  opened.appPath = "/Applications/Opened.app";
  buildWith({opened, outdated("closed")});
  processes.open("/Applications/Opened.app");
  auto snapshot = model->openAppsSnapshot();
  EXPECT_EQ(snapshot.closedLabels, LabelSet{label("closed")});
  EXPECT_FALSE(snapshot.canPatchClosedApps || snapshot.closedAppsWaitForACPower) << "not enabled";
  set("BackgroundPatchClosedAppsEnabled", PlistValue(true));
  EXPECT_TRUE(model->openAppsSnapshot().canPatchClosedApps);
  power.onACPower = false;
  snapshot = model->openAppsSnapshot();
  EXPECT_TRUE(!snapshot.canPatchClosedApps && snapshot.closedAppsWaitForACPower);
  processes.setReadable(false);
  EXPECT_FALSE(model->openAppsSnapshot().closedAppsWaitForACPower) << "all count as open";
}

TEST(DeferralOptions, theMenuTheEscalationAndTheDeadlineDecide) {
  const auto noon = VirtualMachine::kStart;
  CorvaneConfiguration config;
  config.deferralTimerDefault = 60;
  const auto options = [&](DeferralEscalation escalation, std::optional<Date> deadline = std::nullopt) {
    return availableDeferralOptions(config, escalation, deadline, noon, Calendar::utc());
  };
  using Minutes = std::vector<std::int64_t>;
  config.deferralTimerMenu = {0, -5};
  EXPECT_EQ(options(DeferralEscalation::normal), (Minutes{60, 60, 120, 240})) << "as an empty menu";
  config.deferralTimerMenu = {240, 120};
  EXPECT_EQ(options(DeferralEscalation::hard), Minutes{120});
  EXPECT_EQ(options(DeferralEscalation::focus, noon + 3h), Minutes{120});
  config.deferralTimerMenu = {240, 15, 60};
  EXPECT_EQ(options(DeferralEscalation::hard), (Minutes{15, 60}));
  config.aggressivePatchDayDeferral = true;
  config.patchingEndTime = "16:30";
  EXPECT_EQ(options(DeferralEscalation::hard), (Minutes{15, 60, 240}));
  config.patchingEndTime = "13:00";
  EXPECT_EQ(options(DeferralEscalation::hard), Minutes{15});
}

TEST(DeferralTexts, areWordedByWhatRemains) {
  const ScriptedLocale locale;
  EXPECT_EQ(deferralDurationText(2880, locale), "2 days");
  EXPECT_EQ(deferralDurationText(120, locale), "2 hours");
  EXPECT_EQ(deferralDurationText(60, locale), "1 hour");
  EXPECT_EQ(deferralDurationText(90, locale), "90 minutes");
  EXPECT_EQ(deferralDurationText(-5, locale), "0 days");
  const auto when = fmt::format("Nov 1, 2026, 12:00{}PM", kNarrowSpace);
  const auto both = [&](std::int64_t count, bool near) {
    return limitSummaryText(limit::Both{.count = count, .deadline = VirtualMachine::kStart, .deadlineIsNear = near},
                            locale);
  };
  EXPECT_EQ(limitSummaryText(limit::CountOnly{1}, locale), "1 deferral remaining before the hard deadline.");
  EXPECT_EQ(limitSummaryText(limit::CountOnly{3}, locale), "3 deferrals remaining before the hard deadline.");
  EXPECT_EQ(limitSummaryText(limit::DaysOnly{1}, locale), "1 day remaining before the hard deadline.");
  EXPECT_EQ(limitSummaryText(limit::DaysOnly{0}, locale), "0 days remaining before the hard deadline.");
  EXPECT_EQ(both(1, false), "1 deferral remaining, or until " + when + ", whichever comes first.");
  EXPECT_EQ(both(2, false), "2 deferrals remaining, or until " + when + ", whichever comes first.");
  EXPECT_EQ(both(1, true), "Updates install by " + when + ", or 1 deferral remaining, whichever comes first.");
  EXPECT_EQ(both(2, true), "Updates install by " + when + ", or 2 deferrals remaining, whichever comes first.");
  EXPECT_EQ(hardDeadlineText(HardDeadlineTrigger::countAndDate),
            "You have used every deferral and the deadline date has passed.");
}

}  // namespace
}  // namespace corvane
