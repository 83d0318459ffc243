// How a helper is brought up, in virtual time.
#include "app/helper_start.h"

#include <gtest/gtest.h>

#include "core/preferences/preference_manager.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/scripted_helper_registration.h"
#include "platform/scripted/scripted_own_bundle.h"
#include "platform/scripted/scripted_preference_domains.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"

namespace corvane {
namespace {

constexpr const char* kHeartbeat = "/Library/Application Support/Corvane/helper-heartbeat";

class HelperStarting : public testing::Test {
 protected:
  void ask() {
    start.ensureRunning([this](Status status) {
      ++answers;
      answer = std::move(status);
    });
    EXPECT_EQ(answers, 0) << "answered within the call";
  }
  // The daemon shows its first heartbeat this long after it was started.
  auto beatsAfter(Duration delay) {
    return [this, delay] { beat = time.main().after(delay, [this] { files.put(kHeartbeat, "1"); }); };
  }

  VirtualMachine time;
  RecordingLog log;
  ScriptedEntropy entropy;
  ScriptedFiles files{time.clock()};
  ScriptedPreferenceDomains domains{time.main()};
  NotificationCenter notifications{time.main()};
  PreferenceManager preferences{domains, notifications, log};
  ScriptedOwnBundle bundle;
  ScriptedHelperRegistration registration{time.main()};
  HelperInstallationService installation{{registration, files, bundle, preferences, time.clock(), time.main(), entropy},
                                         kHeartbeat};
  HelperStart start{installation, time.main()};
  Lease beat;
  int answers = 0;
  Status answer;
};

TEST_F(HelperStarting, OneThatBeatsIsLeftAlone) {
  files.put(kHeartbeat, "1");
  ask();
  time.runUntilIdle();
  EXPECT_EQ(answers, 1);
  EXPECT_TRUE(answer);
  EXPECT_EQ(registration.registered + registration.kickstarts, 0);
}

TEST_F(HelperStarting, OneThatWasNeverRegisteredIsRegisteredAndWaitedFor) {
  registration.current = HelperStatus::notRegistered;
  registration.onRegister = beatsAfter(700ms);
  ask();
  time.advance(600ms);
  EXPECT_EQ(answers, 0);
  time.advance(200ms);
  EXPECT_EQ(answers, 1);
  EXPECT_TRUE(answer);
  EXPECT_EQ(registration.registered, 1);
  EXPECT_EQ(registration.kickstarts, 0);
}

TEST_F(HelperStarting, OneThatDoesNotRunIsStartedAndGivenItsTime) {
  registration.onKickstart = beatsAfter(kHelperStartLimit - 50ms);
  ask();
  time.advance(kHelperStartLimit);
  EXPECT_EQ(answers, 1);
  EXPECT_TRUE(answer);
  EXPECT_EQ(registration.kickstarts, 1);
}

TEST_F(HelperStarting, OneThatComesTooLateCountsAsNotOperationalAndIsAnsweredOnce) {
  registration.onKickstart = beatsAfter(kHelperStartLimit + 50ms);
  ask();
  time.advance(1min);
  EXPECT_EQ(answers, 1);
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().text, "Root helper is not operational — patching is unavailable.");
}

TEST_F(HelperStarting, TheFreshHeartbeatOfAKilledOneIsNoProofOfLife) {
  files.put(kHeartbeat, "1");
  time.advance(5s);
  registration.printCode = 113;
  registration.onKickstart = beatsAfter(300ms);
  ask();
  time.advance(200ms);
  EXPECT_EQ(answers, 0);
  time.advance(200ms);
  EXPECT_EQ(answers, 1);
  EXPECT_TRUE(answer);
  EXPECT_EQ(registration.kickstarts, 1);
}

TEST_F(HelperStarting, WhatAPersonMustDoFirstIsSaidAtOnce) {
  registration.current = HelperStatus::requiresApproval;
  ask();
  time.runUntilIdle();
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().text, "Root helper requires approval in System Settings › Login Items.");
  registration.current = HelperStatus::notRegistered;
  registration.registerFailure = Error{.domain = "CRVTest", .code = 13, .text = "Permission denied"};
  answers = 0;
  ask();
  time.runUntilIdle();
  EXPECT_EQ(answers, 1);
  ASSERT_FALSE(answer);
  EXPECT_EQ(answer.error().text, "Permission denied");
  EXPECT_EQ(registration.kickstarts, 0);
}

TEST_F(HelperStarting, AnOwnerThatGoesWhileItWaitsIsNotAnswered) {
  int heard = 0;
  {
    HelperStart brief(installation, time.main());
    files.put(kHeartbeat, "1");
    brief.ensureRunning([&](const Status&) { ++heard; });
  }
  time.advance(1min);
  EXPECT_EQ(heard, 0);
}

}  // namespace
}  // namespace corvane
