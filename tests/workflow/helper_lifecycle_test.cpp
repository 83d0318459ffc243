// What a person's or the program's own reset of the helper leads to, and what an armed moment stands for.
#include "workflow/watchpoint.h"
#include "workflow_fixture.h"

namespace corvane {
namespace {

struct HelperLifecycleTest : WorkflowTest {
  // Until the reset has had its answer; a fresh helper's first heartbeat is looked for for 10 seconds.
  void finish() {
    settle();
    advance(15s);
    settle();
  }
  void beatsAfterRegistration() {
    registration.onRegister = [this] { files.put(places.helperHeartbeat(), ""); };
  }
  [[nodiscard]] bool canReset() {
    const auto token = installation.tryBeginReset();
    if (token) installation.endReset(*token);
    return token.has_value();
  }
};

TEST_F(HelperLifecycleTest, AResetReportsHowItEnded) {
  struct Case {
    HelperStatus after;
    bool beats;
    const char* status;
    const char* error;
  };
  const Case cases[] = {
      {HelperStatus::enabled, true, "Root helper reset and is running.", "<none>"},
      {HelperStatus::enabled, false, "<none>",
       "Root helper registered, but the daemon did not start. Try Reset Helper again."},
      {HelperStatus::requiresApproval, false,
       "Root helper re-registered. Approve in System Settings › Login Items & Extensions.", "<none>"},
      {HelperStatus::notRegistered, false, "<none>",
       "Root helper re-registration completed but daemon is not yet registered — try again or reboot."},
      {HelperStatus::notFound, false, "<none>",
       "Root helper re-registration completed but daemon was not found — reinstall Corvane."},
      {HelperStatus::unknown, false, "Root helper re-registration completed; status unknown.", "<none>"}};
  manage({{"AutoResetHelperOnLaunch", PlistValue(false)}});  // one would follow on each that failed
  build();
  for (const auto& one : cases) {
    advance(2min);
    registration.afterRegister = one.after;
    registration.onRegister = nullptr;
    if (one.beats) beatsAfterRegistration();
    model->resetHelper(false);
    EXPECT_EQ(status(), "Resetting root helper…");
    finish();
    EXPECT_EQ(status(), one.status);
    EXPECT_EQ(error(), one.error);
    EXPECT_TRUE(canReset()) << "the token was given back";
    EXPECT_EQ(fields().helper.helperOperational, one.beats);
  }
  EXPECT_TRUE(said("Reset Helper requested by user"));
}

TEST_F(HelperLifecycleTest, OnlyOneResetIsOutAtATime) {
  build();
  registration.unregisterTakes = 3s;
  model->resetHelper(true);
  settle();
  EXPECT_EQ(status(), "Refreshing root helper…");
  model->resetHelper(true);
  EXPECT_EQ(status(), "Refreshing root helper…") << "an automatic one is silent";
  model->resetHelper(false);
  EXPECT_EQ(status(), "A helper reset is already in progress.");
  EXPECT_TRUE(said("Reset Helper skipped — a reset is already in progress."));
  finish();
  EXPECT_EQ(registration.registered, 1);
}

TEST_F(HelperLifecycleTest, AnAutomaticResetThatFailedDoesNotUseUpTheHour) {
  build();
  const auto reset = [&](HelperStatus after, bool beats) {
    advance(2min);
    preferences.writeLastAutoHelperResetDate(time.now());
    registration.afterRegister = after;
    registration.onRegister = nullptr;
    if (beats) beatsAfterRegistration();
    model->resetHelper(true);
    finish();
    return preferences.readLastAutoHelperResetDate().has_value();
  };
  EXPECT_TRUE(reset(HelperStatus::enabled, true));
  EXPECT_FALSE(reset(HelperStatus::enabled, false));
  EXPECT_FALSE(reset(HelperStatus::unknown, false)) << "a success by its answer, and yet no helper";
  EXPECT_TRUE(reset(HelperStatus::requiresApproval, false));
  EXPECT_TRUE(said("Reset Helper requested by auto-trigger"));
}

TEST_F(HelperLifecycleTest, AFirstRegistrationRefreshesOrTellsWhy) {
  setHelperAlive(false);
  build();
  registration.registerFailure = Error{.domain = "Manager", .code = 1, .text = "not allowed"};
  model->registerHelper();
  EXPECT_EQ(error(), "Helper registration failed: not allowed");
  registration.registerFailure.reset();
  beatsAfterRegistration();
  model->registerHelper();
  EXPECT_TRUE(fields().helper.helperOperational);
}

TEST(PendingWatchpointTest, TellsWhatTheArmedMomentIs) {
  const Date now = VirtualMachine::kStart;
  const Date at = now + 1h;
  const DeferralFields normal;
  const DeferralFields hard{.currentDeferralEscalation = DeferralEscalation::hard};
  const DeferralFields ahead{.currentHardDeadlineDate = at};
  const DeferralFields due{.currentHardDeadlineDate = now};
  EXPECT_EQ(pendingWatchpoint(hard, std::nullopt, false, now), std::nullopt);
  EXPECT_EQ(pendingWatchpoint(hard, now, false, now), std::nullopt);
  EXPECT_EQ(pendingWatchpoint(hard, at, true, now), PendingWatchpoint(watchpoint::Enforcement{at}));
  EXPECT_EQ(pendingWatchpoint(due, at, true, now), PendingWatchpoint(watchpoint::Enforcement{at}));
  EXPECT_EQ(pendingWatchpoint(ahead, at, true, now), PendingWatchpoint(watchpoint::FocusDeferral{at}));
  EXPECT_EQ(pendingWatchpoint(normal, at, false, now), PendingWatchpoint(watchpoint::DeferralReminder{at}));
}

}  // namespace
}  // namespace corvane
