#include "background/deferral_watcher.h"

#include "workflow/workflow_fixture.h"

namespace corvane {
namespace {

using TickResult = DeferralWatcher::TickResult;

struct DeferralWatcherTest : WorkflowTest {
  DeferralWatcherTest() {
    preferences.writePatchingCadenceState({.currentPatchingStartDate = kMonday,
                                           .lastPatchingCompletionDate = std::nullopt,
                                           .nextCycleStartDate = kMonday + 168h});
  }
  static constexpr Date kMonday = VirtualMachine::kStart - 12h - 144h;

  void watch(const Apps& apps) {
    buildWith(apps);
    watcher = std::make_unique<DeferralWatcher>(*model, services);
  }
  void set(const char* key, PlistValue value) { preferences.writePreference(key, std::move(value)); }
  void arm(Duration ahead) { preferences.writeNextAutoLaunch(time.now() + ahead, false, false); }
  [[nodiscard]] bool says(std::string_view line) const { return log.holds("DeferralWatcher: " + std::string(line)); }
  [[nodiscard]] bool isRechecking() const { return fields().updateAll.userRecheckInFlight; }

  std::unique_ptr<DeferralWatcher> watcher;
  Lease heartbeat = time.main().every(15s, [this] { setHelperAlive(true); });
};

TEST_F(DeferralWatcherTest, looksEveryMinuteAndExactlyWhenTheArmedMomentComes) {
  watch({outdated("a")});
  arm(10min + 3s);
  watcher->start();
  EXPECT_TRUE(says("Armed watchpoint in 603s (NextAutoLaunch)."));
  EXPECT_TRUE(says("Started — interval=60s, firstTick=30s"));
  advance(10min + 2s);
  EXPECT_FALSE(isRechecking());
  advance(1s);
  EXPECT_TRUE(isRechecking());
  EXPECT_TRUE(
      says("Deadline trigger fired (status=normal, NextAutoLaunch=2026-11-01T12:10:03+00:00) with 1 pending update(s); "
           "engaging updateAll()."));
  EXPECT_EQ(notices.told, std::vector<std::string>{"ended, 1 pending"});
  answer(Apps{outdated("a")});
  EXPECT_TRUE(fields().deferral.showDeferralPrompt);
  EXPECT_EQ(prompts.shown, 1);
  EXPECT_EQ(watcher->tick(), TickResult::idle) << "the prompt stands";
}

TEST_F(DeferralWatcherTest, aMomentArmedAnewMovesTheWatchpoint) {
  watch({outdated("a")});
  watcher->start();
  arm(2h);
  settle();
  arm(5s);
  settle();
  EXPECT_TRUE(says("Armed watchpoint in 5s (NextAutoLaunch)."));
  advance(5s);
  EXPECT_TRUE(isRechecking());
}

TEST_F(DeferralWatcherTest, theMomentIsKeptAcrossSleepAndAChangedClock) {
  watch({outdated("a")});
  arm(3h);
  watcher->start();
  settle();
  time.suspend(3h);
  settle();
  EXPECT_TRUE(log.holds("helper or Installomator not ready")) << "due on wake, sooner than the helper's next heartbeat";
  advance(15s);
  ASSERT_TRUE(isRechecking());
  answer(Apps{outdated("a")});
  model->deferUpdates(false);
  settle();
  time.setWallClock(time.now() - 24h);
  advance(60min);
  EXPECT_FALSE(fields().deferral.showDeferralPrompt) << "a clock set back a day forces nothing before its moment";
  advance(24h + 60min);
  EXPECT_TRUE(isRechecking());
}

TEST_F(DeferralWatcherTest, whatIsDueDuringACheckIsTriedAgainIn15Seconds) {
  watch({outdated("a")});
  arm(5s);
  watcher->start();
  model->checkForUpdates();
  advance(5s);
  EXPECT_TRUE(says("Watchpoint elapsed during a check or patch — retrying in 15s."));
  answer(Apps{outdated("a")});
  advance(14s);
  EXPECT_FALSE(isRechecking());
  advance(1s);
  EXPECT_TRUE(isRechecking());
}

TEST_F(DeferralWatcherTest, aFocusDeadlineAloneDoesNothing) {
  set("DeadlineCountFocus", PlistValue(0));
  watch({outdated("a")});
  EXPECT_EQ(watcher->tick(), TickResult::idle);
}

TEST_F(DeferralWatcherTest, aDueMomentWithNothingPendingIsForgotten) {
  watch({current("a")});
  arm(-1s);
  EXPECT_EQ(watcher->tick(), TickResult::idle);
  EXPECT_TRUE(says("No pending updates remain; clearing stale watchpoint."));
  EXPECT_EQ(preferences.readNextAutoLaunch(), std::nullopt);
  EXPECT_EQ(helper.discoveriesAsked, 0);
}

TEST_F(DeferralWatcherTest, aHelperThatIsNotReadyIsWaitedFor) {
  watch({outdated("a")});
  setScript(false);
  arm(-1s);
  EXPECT_EQ(watcher->tick(), TickResult::busy);
  EXPECT_TRUE(
      says("Tick skipped — helper or Installomator not ready (helperOperational=true, installomatorAvailable=false)."));
}

TEST_F(DeferralWatcherTest, aDismissedHardPromptStaysAwayUntilItsEnforcement) {
  set("DeadlineCountHard", PlistValue(0));
  watch({outdated("a")});
  arm(10min);
  preferences.writeHardDeadlineDialogDismissedUntil(*preferences.readNextAutoLaunch() + 1900ms);
  EXPECT_EQ(watcher->tick(), TickResult::idle);
  preferences.writeHardDeadlineDialogDismissedUntil(*preferences.readNextAutoLaunch() + 3s);
  EXPECT_EQ(watcher->tick(), TickResult::engaged) << "of another enforcement";
  EXPECT_TRUE(
      says("Deadline trigger fired (status=hardDeadlineReached, trigger=count, "
           "NextAutoLaunch=2026-11-01T12:10:00+00:00) with 1 pending update(s); engaging updateAll()."));
  EXPECT_TRUE(
      says("Deadline status hardDeadlineReached — presenting the standalone prompt; leaving the dashboard closed."));
}

TEST_F(DeferralWatcherTest, aCompleteCycleForgetsWhatIsArmedAndKeepsWhatIsPending) {
  completeCycle();
  watch({outdated("a")});
  arm(-1s);
  EXPECT_EQ(watcher->tick(), TickResult::idle);
  EXPECT_EQ(preferences.readNextAutoLaunch(), std::nullopt);
}

TEST_F(DeferralWatcherTest, anEnforcementMissedAfterHoursGetsAnHour) {
  set("BusinessHoursStartTime", PlistValue("09:00"));
  set("BusinessHoursEndTime", PlistValue("17:00"));
  set("DeadlineCountHard", PlistValue(0));
  watch({outdated("a")});
  preferences.writeLastHardDeadlineFiredAt(time.now() - 16h);
  EXPECT_EQ(watcher->tick(), TickResult::engaged);
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 1h);
  EXPECT_EQ(preferences.readLastHardDeadlineFiredAt(), std::nullopt) << "not armed a second time";
  EXPECT_TRUE(
      says("Missed after-hours enforcement detected (hard deadline fired 2026-10-31T20:00:00+00:00 outside business "
           "hours, now back inside) — arming 1-hour countdown to 2026-11-01T13:00:00+00:00."));
  answer(Apps{outdated("a")});
  EXPECT_TRUE(log.holds("keeping the enforcement already armed for 2026-11-01T13:00:00+00:00."));
}

TEST_F(DeferralWatcherTest, focusHidesThePromptAndSaysWhatItDid) {
  set("DeadlineCountFocus", PlistValue(3));
  watch({outdated("a")});
  focus.disturbed = true;
  arm(-1s);
  EXPECT_EQ(watcher->tick(), TickResult::engaged);
  EXPECT_TRUE(says("Automatic focus deferral; dialog and toast suppressed."));
  EXPECT_TRUE(notices.told.empty());
  set("FocusDeferralNotificationsEnabled", PlistValue(true));
  arm(-1s);
  EXPECT_EQ(watcher->tick(), TickResult::engaged);
  EXPECT_TRUE(says("Automatic focus deferral; dialog hidden, toast posted."));
  focus.holders = std::nullopt;
  arm(-1s);
  EXPECT_EQ(watcher->tick(), TickResult::engaged);
  EXPECT_TRUE(says("Display assertion check inconclusive; dialog hidden until the recheck."));
  EXPECT_FALSE(fields().deferral.showDeferralPrompt);
}

TEST_F(DeferralWatcherTest, aNewCycleLooksAnewAtOnceOrAsSoonAsItMay) {
  set("DeadlineCountHard", PlistValue(1));
  set("HardDeferralCount", PlistValue(1));
  set("DeadlineDaysHard", PlistValue(3));
  watch({outdated("a")});
  time.advanceTo(kMonday + 168h);
  model->startPatching({label("a")}, DiscoveryOperation::patchSingle, {}, nullptr);
  settle();
  EXPECT_EQ(watcher->tick(), TickResult::busy);
  EXPECT_TRUE(says(
      "Patching cycle reached 2026-11-02T00:00:00+00:00 — arming the next cycle and resetting deferral counters."));
  EXPECT_TRUE(says("Cadence reset rediscovery deferred — check/patch in flight; retrying in 15s."));
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 0);
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralDate, kMonday + 168h + 72h);
  EXPECT_EQ(watcher->tick(), TickResult::busy) << "no deadline is looked at before";
  answerRun(PatchRunAnswer{.success = true, .message = "Updated 1 of 1.", .installedCount = 1});
  answer(Apps{current("a")});
  advance(15s);
  EXPECT_TRUE(says("Cadence reset — running immediate discovery + update check (full notify/dialog path)."));
  EXPECT_TRUE(fields().gate.isLoading);
}

TEST(CycleDecision, seedsRollsRepairsAndLeavesATestAnchorAlone) {
  const auto calendar = Calendar::utc();
  const PatchingCadenceManager cadence(PatchingCadenceSettings{}, calendar);
  const auto now = VirtualMachine::kStart;
  const auto monday = now - 12h - 144h;
  const auto seeded = decideCycle({}, cadence, now, false);
  EXPECT_EQ(seeded.write->currentPatchingStartDate, monday);
  EXPECT_FALSE(seeded.newCycle);
  EXPECT_EQ(seeded.logLine,
            "No CurrentPatchingStartDate on file — seeding cadence anchor at 2026-10-26T00:00:00+00:00, next cycle "
            "2026-11-02T00:00:00+00:00.");
  const CadenceState whole{.currentPatchingStartDate = monday,
                           .lastPatchingCompletionDate = std::nullopt,
                           .nextCycleStartDate = monday + 168h};
  EXPECT_FALSE(decideCycle(whole, cadence, now, false).write);
  auto open = whole;
  open.nextCycleStartDate.reset();
  EXPECT_EQ(decideCycle(open, cadence, now, false).write, whole);
  auto crooked = whole;
  crooked.currentPatchingStartDate = monday + 9h;
  crooked.lastPatchingCompletionDate = monday + 10h;
  const auto repaired = decideCycle(crooked, cadence, now, false);
  EXPECT_EQ(repaired.write->currentPatchingStartDate, monday);
  EXPECT_EQ(repaired.write->lastPatchingCompletionDate, monday + 10h);
  EXPECT_TRUE(repaired.isWarning && !repaired.newCycle);
  const auto kept = decideCycle(crooked, cadence, now, true);
  EXPECT_FALSE(kept.write);
  EXPECT_EQ(kept.logLine, "Preserving admin test-mode anchor 2026-10-26T09:00:00+00:00 instead of rolling it forward.");
  const auto rolled = decideCycle(crooked, cadence, now + 24h, true);
  EXPECT_TRUE(rolled.newCycle && rolled.resetDeferrals) << "an end is an end, for a test's anchor too";
}

}  // namespace
}  // namespace corvane
