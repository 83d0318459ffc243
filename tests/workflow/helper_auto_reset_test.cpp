// When the model sees to a helper that does not answer: what it waits for, starts and resets by itself.
#include "workflow_fixture.h"

namespace corvane {
namespace {

struct AutoResetTest : WorkflowTest {
  AutoResetTest() { stop(); }
  void stop() {
    registration.current = HelperStatus::enabled;
    (void)files.remove(places.helperHeartbeat());
  }
  void beat() { files.put(places.helperHeartbeat(), ""); }
  // Past the grace and what comes after it, and past the end of a reset.
  void afterGrace() {
    advance(24s);
    settle();
  }
  void launch() {
    log.clear();
    build();
    afterGrace();
  }
  [[nodiscard]] int resets() const { return registration.unregistered; }
};

TEST_F(AutoResetTest, aHelperThatComesLateAfterLoginIsGivenItsTime) {
  build();
  EXPECT_TRUE(said("Helper is registered but not running yet; waiting up to 20s for it to load after login."));
  EXPECT_EQ(model->statusLine(), "Starting helper…");
  model->refreshHelperState(true);
  advance(17s);
  EXPECT_EQ(resets(), 0) << "no decision is taken in that time";
  beat();
  advance(2s);
  EXPECT_TRUE(said("Helper heartbeat appeared during the post-login wait."));
  EXPECT_TRUE(fields().helper.helperOperational);
  EXPECT_EQ(fields().helper.postLoginHelperGraceDeadline, std::nullopt);
  advance(1min);
  EXPECT_EQ(registration.kickstarts + resets(), 0);
}

TEST_F(AutoResetTest, oneThatDoesNotComeIsStartedAndThenResetAsTheLastResort) {
  registration.onKickstart = [this] { beat(); };
  build();
  advance(19s);
  EXPECT_EQ(registration.kickstarts, 0);
  advance(1s);
  EXPECT_EQ(registration.kickstarts, 1);
  EXPECT_TRUE(said("Asked launchd to start the registered helper (kickstart status=0)."));
  advance(3s);
  EXPECT_TRUE(said("Helper is running after kickstart."));
  EXPECT_EQ(resets(), 0);

  stop();
  registration.onKickstart = nullptr;
  registration.kickstartCode = std::nullopt;
  launch();
  EXPECT_TRUE(said("Asked launchd to start the registered helper (kickstart status=could not launch launchctl)."));
  EXPECT_TRUE(said("Helper still not running after kickstart; falling back to re-register."));
  EXPECT_TRUE(said("Helper reports enabled but is not operational — auto-resetting"));
  EXPECT_EQ(status(), "Refreshing root helper…");
  EXPECT_EQ(resets(), 1);
  EXPECT_EQ(registration.kickstarts, 2);
}

TEST_F(AutoResetTest, aClockThatIsSetBackDoesNotProlongTheWait) {
  build();
  advance(3s);
  time.setWallClock(time.now() - 24h);
  advance(17s);
  EXPECT_EQ(registration.kickstarts, 1);
}

TEST_F(AutoResetTest, theStatusDecidesWhetherOneIsMissed) {
  struct Case {
    HelperStatus status;
    int kickstarts;
    int resets;
  };
  for (const auto& one :
       {Case{HelperStatus::enabled, 1, 1}, Case{HelperStatus::unknown, 1, 1}, Case{HelperStatus::notRegistered, 0, 0},
        Case{HelperStatus::requiresApproval, 0, 0}, Case{HelperStatus::notFound, 0, 0}}) {
    SCOPED_TRACE(helperStatusName(one.status));
    preferences.clearLastAutoHelperResetDate();
    registration.current = one.status;
    registration.afterRegister = one.status;
    registration.kickstarts = 0;
    registration.unregistered = 0;
    launch();
    model->refreshHelperState(true);
    EXPECT_EQ(registration.kickstarts, one.kickstarts);
    EXPECT_EQ(resets(), one.resets);
    advance(15s);
    settle();
  }
}

TEST_F(AutoResetTest, anotherBinaryThanWasRegisteredIsResetAtOnce) {
  installation.recordCurrentHelperCDHashIfNeeded();
  bundle.digest = "b2";
  build();
  EXPECT_TRUE(said("Helper binary cdhash changed since last registration — auto-resetting to refresh launchd binding"));
  EXPECT_FALSE(said("Helper reports")) << "one cause is told, where both hold";
  EXPECT_FALSE(said("Helper is registered but not running yet"));
  EXPECT_EQ(resets(), 1);
}

TEST_F(AutoResetTest, neitherSettingsNorARunAreOverridden) {
  manage({{"AutoResetHelperOnLaunch", PlistValue(false)}});
  buildWith({outdated("a")});
  afterGrace();
  EXPECT_EQ(resets(), 0);
  manage({});
  model->startBackgroundPatch({label("a")}, {}, nullptr);
  model->refreshHelperState(true);
  notifications.post(CorvaneHelperPassEnded{.runID = "r1"});
  ASSERT_FALSE(fields().gate.isPatching);
  model->refreshHelperState(true);
  EXPECT_EQ(resets(), 0) << "our run is still out";
  answerRun(PatchRunAnswer{.success = true});
  model->refreshHelperState(true);
  EXPECT_EQ(resets(), 1);
}

TEST_F(AutoResetTest, oneResetALaunchAndOneAnHour) {
  registration.onRegister = [this] { beat(); };
  launch();
  advance(1min);
  EXPECT_EQ(resets(), 1);
  EXPECT_TRUE(said("Reset Helper requested by auto-trigger"));
  EXPECT_EQ(status(), "Root helper reset and is running.");
  advance(2h);
  stop();
  model->refreshHelperState(true);
  EXPECT_EQ(resets(), 1) << "this launch has had its reset";

  preferences.writeLastAutoHelperResetDate(time.now() - 1h + 60s);
  launch();
  model->refreshHelperState(true);
  EXPECT_EQ(resets(), 1);
  EXPECT_EQ(log.count("StatusViewModel: Skipping auto-reset; last attempt was 3563s ago (status=enabled, "
                      "operationallyBroken=true, binaryChanged=false). Clear LastAutoHelperResetDate to retry sooner."),
            1U);
  EXPECT_EQ(log.count("Skipping auto-reset"), 1U) << "once a launch";
  advance(40s);
  model->refreshHelperState(true);
  EXPECT_EQ(resets(), 2) << "the hour is over";

  advance(1min);
  stop();
  preferences.clearLastAutoHelperResetDate();
  launch();
  EXPECT_EQ(resets(), 3);
  advance(1min);
  stop();
  preferences.writeLastAutoHelperResetDate(time.now() + 24h);
  launch();
  EXPECT_EQ(resets(), 4) << "a date of a clock that was ahead forbids nothing";
}

TEST_F(AutoResetTest, anAutomaticResetThatFailedTellsSoAndLeavesTheNextLaunchItsOwn) {
  registration.unregisterFailure = Error{.domain = "Manager", .code = 5, .text = "it would not stop"};
  launch();
  EXPECT_EQ(error(), "Reset Helper failed: it would not stop (domain: Manager, code: 5)");
  EXPECT_TRUE(said(error()));
  model->refreshHelperState(true);
  settle();
  EXPECT_EQ(log.count("auto-resetting"), 1U);
  EXPECT_EQ(preferences.readLastAutoHelperResetDate(), std::nullopt);
  launch();
  EXPECT_EQ(log.count("auto-resetting"), 1U);
}

}  // namespace
}  // namespace corvane
