#include "core/client/helper_installation_service.h"

#include "support/scripted_installation.h"
#include "support/test.h"

namespace corvane {
namespace {

struct InstallationFixture : ::testing::Test, testing::ScriptedInstallation {
  std::optional<Result<HelperResetResult>> result;

  void reset(Uuid token) {
    service.performReset(token, [this](Result<HelperResetResult> r) { result = std::move(r); });
  }
};

TEST_F(InstallationFixture, IsOperationalWhileEnabledWithAYoungHeartbeat) {
  EXPECT_FALSE(service.isOperational()) << "no heartbeat";
  beat();
  EXPECT_TRUE(service.isOperational());
  machine.advance(59s);
  EXPECT_TRUE(service.isOperational());
  machine.advance(1s);
  EXPECT_FALSE(service.isOperational());
  beat();
  registration.current = HelperStatus::requiresApproval;
  EXPECT_FALSE(service.isOperational());
  registration.current = HelperStatus::enabled;
  machine.setWallClock(machine.now() - 1h);
  EXPECT_FALSE(service.isOperational()) << "written by a clock that was set back";
}

TEST_F(InstallationFixture, NoticesAnotherBinaryAndRecordsItsDigest) {
  EXPECT_FALSE(service.helperBinaryHasChanged()) << "nothing was recorded";
  service.recordCurrentHelperCDHashIfNeeded();
  EXPECT_EQ(service.lastRegisteredHelperCDHash(), "a1");
  bundle.digest = "b2";
  EXPECT_TRUE(service.helperBinaryHasChanged());
  ASSERT_TRUE(service.registerHelper());
  EXPECT_FALSE(service.helperBinaryHasChanged());
  bundle.digest.reset();
  service.recordCurrentHelperCDHashIfNeeded();
  EXPECT_EQ(service.lastRegisteredHelperCDHash(), "b2") << "a bundle without a helper changes nothing";
}

TEST_F(InstallationFixture, OnlyTheHolderOfTheOneTokenResets) {
  const auto token = service.tryBeginReset();
  ASSERT_TRUE(token);
  EXPECT_FALSE(service.tryBeginReset());
  reset(Uuid{});
  machine.runUntilIdle();
  EXPECT_EQ(result->error(), HelperResetError::alreadyInProgress());
  EXPECT_EQ(registration.unregistered, 0);
  service.endReset(Uuid{});
  EXPECT_TRUE(service.isResetInFlight());
  service.endReset(*token);
  EXPECT_FALSE(service.isResetInFlight());
  EXPECT_TRUE(service.tryBeginReset());
}

TEST_F(InstallationFixture, AResetWaitsForTheFreshDaemonsHeartbeat) {
  beat();  // of the daemon that is about to end
  machine.advance(5s);
  reset(*service.tryBeginReset());
  machine.advance(3s);
  EXPECT_FALSE(result) << "the old heartbeat proves nothing";
  beat();
  machine.advance(kHelperResetPoll);
  EXPECT_EQ(result->value(), (HelperResetResult{HelperStatus::enabled, true}));
}

TEST_F(InstallationFixture, AResetEndsWithoutAHeartbeatApprovalOrRegistration) {
  const auto token = *service.tryBeginReset();
  reset(token);
  machine.advance(kHelperResetWait + kHelperResetPoll);
  EXPECT_EQ(result->value(), (HelperResetResult{HelperStatus::enabled, false}));
  registration.afterRegister = HelperStatus::requiresApproval;
  reset(token);
  machine.advance(1s);
  EXPECT_EQ(result->value(), (HelperResetResult{HelperStatus::requiresApproval, false}));
  registration.registerFailure = Error{"CRVRegistration", 5, "denied"};
  reset(token);
  machine.advance(1s);
  EXPECT_EQ(result->error().text, "denied");
}

}  // namespace
}  // namespace corvane
