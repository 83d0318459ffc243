// How a helper is brought up, in virtual time.
#include "app/helper_start.h"

#include "support/scripted_installation.h"
#include "support/test.h"

namespace corvane {
namespace {

struct HelperStarting : ::testing::Test, protected testing::ScriptedInstallation {
  void ask() {
    start.ensureRunning([this](Status status) {
      ++answers;
      answer = std::move(status);
    });
    EXPECT_EQ(answers, 0) << "answered within the call";
  }
  void expectRunning() const {
    EXPECT_EQ(answers, 1);
    EXPECT_TRUE(answer);
  }
  void expectRefused(std::string_view text) const {
    EXPECT_EQ(answers, 1);
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().text, text);
  }
  // The daemon shows its first heartbeat this long after it was started.
  auto beatsAfter(Duration delay) {
    return [this, delay] { coming = machine.main().after(delay, [this] { beat(); }); };
  }

  HelperStart start{service, machine.main()};
  Lease coming;
  int answers = 0;
  Status answer;
};

TEST_F(HelperStarting, OneThatBeatsIsLeftAlone) {
  beat();
  ask();
  machine.runUntilIdle();
  expectRunning();
  EXPECT_EQ(registration.registered + registration.kickstarts, 0);
}

TEST_F(HelperStarting, OneThatWasNeverRegisteredIsRegisteredAndWaitedFor) {
  registration.current = HelperStatus::notRegistered;
  registration.onRegister = beatsAfter(700ms);
  ask();
  machine.advance(600ms);
  EXPECT_EQ(answers, 0);
  machine.advance(200ms);
  expectRunning();
  EXPECT_EQ(registration.registered, 1);
  EXPECT_EQ(registration.kickstarts, 0);
}

TEST_F(HelperStarting, OneThatDoesNotRunIsStartedAndGivenItsTime) {
  registration.onKickstart = beatsAfter(kHelperStartLimit - 50ms);
  ask();
  machine.advance(kHelperStartLimit);
  expectRunning();
  EXPECT_EQ(registration.kickstarts, 1);
}

TEST_F(HelperStarting, OneThatComesTooLateCountsAsNotOperationalAndIsAnsweredOnce) {
  registration.onKickstart = beatsAfter(kHelperStartLimit + 50ms);
  ask();
  machine.advance(1min);
  expectRefused("Root helper is not operational — patching is unavailable.");
}

TEST_F(HelperStarting, TheFreshHeartbeatOfAKilledOneIsNoProofOfLife) {
  beat();
  machine.advance(5s);
  registration.printCode = 113;
  registration.onKickstart = beatsAfter(300ms);
  ask();
  machine.advance(200ms);
  EXPECT_EQ(answers, 0);
  machine.advance(200ms);
  expectRunning();
  EXPECT_EQ(registration.kickstarts, 1);
}

TEST_F(HelperStarting, OneThatIsBeingResetIsLeftToIt) {
  beat();
  const auto token = service.tryBeginReset();
  ask();
  machine.advance(5s);
  EXPECT_EQ(answers, 0) << "the old one still beats";
  EXPECT_EQ(registration.registered + registration.kickstarts, 0);
  beat();
  machine.advance(kHelperStartPoll);
  expectRunning();
  service.endReset(*token);
}

TEST_F(HelperStarting, WhatAPersonMustDoFirstIsSaidAtOnce) {
  registration.current = HelperStatus::requiresApproval;
  ask();
  machine.runUntilIdle();
  expectRefused("Root helper requires approval in System Settings › Login Items.");
  registration.current = HelperStatus::notRegistered;
  registration.registerFailure = Error{.domain = "CRVTest", .code = 13, .text = "Permission denied"};
  answers = 0;
  ask();
  machine.runUntilIdle();
  expectRefused("Permission denied");
  EXPECT_EQ(registration.kickstarts, 0);
}

TEST_F(HelperStarting, AnOwnerThatGoesWhileItWaitsIsNotAnswered) {
  int heard = 0;
  {
    HelperStart brief(service, machine.main());
    beat();
    brief.ensureRunning([&](const Status&) { ++heard; });
  }
  machine.advance(1min);
  EXPECT_EQ(heard, 0);
}

}  // namespace
}  // namespace corvane
