// Deferrals on the command line: the prompt's rules, and a refusal that says which limit and until when.

#include "ctl/session_fixture.h"

namespace corvane {
namespace {

struct CtlDeferral : CtlSession {
  void set(const char* key, PlistValue value) { preferences.writePreference(key, std::move(value)); }
  ExitCode defer(std::int64_t minutes) { return run({.verb = Verb::defer, .minutes = minutes}); }
};

TEST_F(CtlDeferral, ALengthOnOfferIsArmedCountedAndWrittenDown) {
  know({outdated("a"), outdated("b")});
  EXPECT_EQ(defer(120), ExitCode::done);
  EXPECT_TRUE(out.starts_with("Updates deferred for 2 hours.\n")) << out;
  EXPECT_EQ(preferences.readNextAutoLaunch(), time.now() + 2h);
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 1);
  for (const auto* name : {"a", "b"}) {
    const auto events = deferralEvents.readEvents(label(name));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].eventType, DeferralEventType::userDeferred);
    EXPECT_EQ(events[0].deferralMinutes, 120);
  }
}

TEST_F(CtlDeferral, ALengthThatIsNotOfferedIsRefusedWithThoseThatAre) {
  set("DeadlineDaysHard", PlistValue(3));
  set("HardDeferralDate", PlistValue(time.now() + 90min));
  know({outdated("a")});
  EXPECT_EQ(defer(120), ExitCode::failed);
  EXPECT_EQ(err,
            "corvanectl: Updates cannot be put off for 120 minutes. On offer: 1 hour (60 min). A deferral must end "
            "before the deadline, Nov 1, 2026, 1:30\u202FPM.\n");
  EXPECT_EQ(preferences.readNextAutoLaunch(), std::nullopt);
}

TEST_F(CtlDeferral, AReachedLimitIsNamedWithTheTimeUntilWhichItStands) {
  set("DeadlineCountHard", PlistValue(2));
  set("HardDeferralCount", PlistValue(2));
  preferences.writePatchingCadenceState(
      {.currentPatchingStartDate = time.now() - 24h, .nextCycleStartDate = time.now() + 72h});
  know({outdated("a")});
  EXPECT_EQ(defer(60), ExitCode::failed);
  EXPECT_EQ(err,
            "corvanectl: The update deadline has passed. You have used every deferral. Deferrals: 2 of 2. Deferrals "
            "are possible again from Nov 4, 2026, 12:00\u202FPM, when the next cycle starts.\n");
  EXPECT_EQ(run({.verb = Verb::deadline}), ExitCode::done);
  EXPECT_NE(out.find("Deferrals used          2 of 2\n"), std::string::npos) << out;
  EXPECT_EQ(runJson(Verb::deadline), ExitCode::done);
  EXPECT_EQ(field("deadlineStatus").string(), "hardDeadlineReached");
  EXPECT_EQ(field("hardDeferralCount").integer(), 2);
}

TEST_F(CtlDeferral, WithNothingPendingThereIsNothingToPutOff) {
  know({current("a")});
  EXPECT_EQ(defer(60), ExitCode::failed);
  EXPECT_EQ(preferences.readDeferralInfo().hardDeferralCount, 0);
}

TEST_F(CtlDeferral, UpdateAllDecidesAsTheWindowDoesAndTellsTheQuestion) {
  know({outdated("a"), outdated("b")});
  answerDiscoveries({Apps{outdated("a"), current("b")}});
  EXPECT_EQ(run({.verb = Verb::update, .all = true}), ExitCode::done);
  EXPECT_TRUE(out.starts_with("The a  1.0 → 2.0  Closed. (Will update when updates are installed.)\n\n")) << out;
  EXPECT_NE(out.find("`corvanectl defer MINUTES` puts them off: 1 hour (60 min), 2 hours (120 min)"), std::string::npos)
      << out;
  EXPECT_EQ(helper.runsAsked, 0);
  answerDiscoveries({Apps{current("a"), current("b")}});
  EXPECT_EQ(run({.verb = Verb::update, .all = true}), ExitCode::done);
  EXPECT_NE(out.find("No applications currently require updates."), std::string::npos) << out;
}

TEST_F(CtlDeferral, UpdateAllInACompleteCycleInstallsAndTellsHowThatEnded) {
  completeCycle();
  know({outdated("a"), current("b")});
  answerDiscoveries({Apps{outdated("a")}, Apps{outdated("a")}});
  runAnswer = PatchRunAnswer{.success = false, .message = "Updated 0 of 1. Failed: a."};
  EXPECT_EQ(run({.verb = Verb::update, .json = true, .all = true}), ExitCode::failed);
  EXPECT_EQ(field("success").boolean(), false);
  EXPECT_EQ(errorText(), "Updated 0 of 1. Failed: a.");
  EXPECT_THAT(printedLabels(), ::testing::ElementsAre("a"));

  answerDiscoveries({Apps{outdated("a")}, Apps{current("a")}});
  runAnswer = PatchRunAnswer{.success = true, .message = "Updated 1 app.", .installedCount = 1};
  EXPECT_EQ(run({.verb = Verb::update, .all = true}), ExitCode::done);
  EXPECT_TRUE(out.starts_with("Updated 1 app.\n")) << out;
}

}  // namespace
}  // namespace corvane
