// What a launch starts, and starts again.
#include "app/background_work.h"

#include "app/launch_registration.h"
#include "background/background_fixture.h"

namespace corvane {
namespace {

struct BackgroundWorkTest : BackgroundTest {
  std::vector<std::string> starts() {
    std::vector<std::string> owners;
    for (const auto& line : log.messages()) {
      const auto owner = line.substr(0, line.find(':'));
      const bool isService = owner.ends_with("Scheduler") || owner.ends_with("Observer") || owner.ends_with("Watcher");
      if (isService && (owners.empty() || owners.back() != owner)) owners.push_back(owner);
    }
    log.clear();
    return owners;
  }
};

TEST_F(BackgroundWorkTest, startsTheFiveInTheirOrderAndAgainWithNewSettings) {
  set("BackgroundPatchClosedAppsScheduler", PlistValue("helperDaemon"));
  build();
  log.clear();
  BackgroundWork work(*model, background);
  const std::vector<std::string> five = {"BackgroundPatchScheduler", "HelperBackgroundPatchObserver",
                                         "HelperScheduledDiscoveryObserver", "SelfUpdateScheduler", "DeferralWatcher"};
  work.start();
  EXPECT_EQ(starts(), five);
  work.start();
  EXPECT_EQ(starts(), std::vector<std::string>());
  notifications.post(CorvaneSettingsDidChange());
  settle();
  EXPECT_EQ(starts(), five);
}

TEST_F(BackgroundWorkTest, aLaunchRegistersAHelperThatIsNotKnown) {
  const Logger corvane(log, "Corvane");
  const auto launch = [&](HelperStatus status) {
    registration.current = status;
    log.clear();
    registerHelperAtLaunch(installation, corvane);
    return log.messages().front();
  };
  EXPECT_EQ(launch(HelperStatus::enabled), "Corvane: Root helper is running");
  EXPECT_EQ(installation.lastRegisteredHelperCDHash(), bundle.digest);
  EXPECT_EQ(launch(HelperStatus::requiresApproval),
            "Corvane: Root helper awaiting approval in System Settings › Login Items & Extensions");
  EXPECT_EQ(registration.current, HelperStatus::requiresApproval);
  EXPECT_EQ(launch(HelperStatus::notRegistered), "Corvane: Registering root helper…");
  EXPECT_TRUE(log.holds("Corvane: Root helper register() returned without error (post-status: enabled)"));
  EXPECT_EQ(launch(HelperStatus::notFound), "Corvane: Root helper not yet known to smd; attempting registration…");
  const auto token = installation.tryBeginReset();
  EXPECT_EQ(launch(HelperStatus::notRegistered),
            "Corvane: Skipping launch registration because a helper reset is already in progress.");
  installation.endReset(*token);
}

TEST_F(BackgroundWorkTest, aHelperThatWasReplacedIsBoundAnewBeforeTheLaunchRecordsIt) {
  const Logger corvane(log, "Corvane");
  registerHelperAtLaunch(installation, corvane);
  bundle.digest = "of the next version";
  StatusViewModel launched(services);
  launched.keepHelper();
  registerHelperAtLaunch(installation, corvane);
  EXPECT_TRUE(log.holds("Helper binary cdhash changed since last registration — auto-resetting"));
  EXPECT_TRUE(log.holds("Skipping launch registration because a helper reset is already in progress."));
}

}  // namespace
}  // namespace corvane
