#include "background/self_update_scheduler.h"

#include "background/background_fixture.h"

namespace corvane {
namespace {

struct SelfUpdateSchedulerTest : BackgroundTest {
  SelfUpdateSchedulerTest() {
    set("SelfUpdateEnabled", PlistValue(true));
    set("SelfUpdateLabel", PlistValue(" corvane4\n"));
    set("SelfUpdateFrequency", PlistValue("daily"));
    set("BackgroundPatchClosedAppsEnabled", PlistValue(false));
    bundle.bundleShortVersion = "4.0";
    bundle.bundleVersion = "400";
    // What the scheduler asks is no pass of the model, which stays idle meanwhile.
    helper.generation = [] { return -1; };
    build();
    scheduler = std::make_unique<SelfUpdateScheduler>(*model, background);
  }
  void tick(Result<Apps> apps) {
    const auto asked = helper.discoveriesAsked;
    scheduler->tick();
    ASSERT_EQ(helper.discoveriesAsked, asked + 1);
    EXPECT_THAT(helper.discoveries.back().labels, ElementsAre(label("corvane4")));
    answer(std::move(apps), helper.discoveries.size() - 1);
  }
  static Apps offering(const char* version) {
    auto app = makeApp({.label = "corvane4", .installed = "4.0"});
    if (version != nullptr) app.newVersion = version;
    return {app};
  }
  [[nodiscard]] const std::optional<SelfUpdateAvailability>& available() const {
    return fields().selfUpdate.selfUpdateAvailable;
  }
  [[nodiscard]] bool says(std::string_view line) const {
    return log.holds("SelfUpdateScheduler: " + std::string(line));
  }

  std::unique_ptr<SelfUpdateScheduler> scheduler;
};

TEST_F(SelfUpdateSchedulerTest, looksByItsFrequencyAndCountsAFailedCheck) {
  scheduler->start();
  EXPECT_TRUE(says("Started — frequency=daily, label=corvane4, firstFire=300s."));
  advance(6min);
  ASSERT_EQ(helper.discoveries.size(), 1U);
  answer(failure("CRVHelper", 7, "busy"));
  EXPECT_TRUE(says("Discovery failed: busy"));
  EXPECT_EQ(preferences.readLastSelfUpdateCheckDate(), time.now());
  advance(1h);
  scheduler->start();
  EXPECT_TRUE(log.holds("firstFire=82800s."));
  set("SelfUpdateEnabled", PlistValue(false));
  scheduler->start();
  EXPECT_TRUE(says("Self-update disabled in configuration; not scheduling."));
  advance(48h);
  EXPECT_EQ(helper.discoveriesAsked, 1);
}

TEST_F(SelfUpdateSchedulerTest, aTickWaitsForAnIdleModelAndAReadyHelper) {
  setScript(false);
  scheduler->tick();
  EXPECT_TRUE(says("Skipping tick — helper or Installomator not ready."));
  setScript(true);
  model->checkForUpdates();
  scheduler->tick();
  EXPECT_TRUE(says("Skipping tick — dashboard busy (isPatching=false, isLoading=true)."));
  EXPECT_EQ(helper.discoveries.size(), 1U);
}

TEST_F(SelfUpdateSchedulerTest, nothingNewClearsAnEarlierOffer) {
  tick(offering("4.1"));
  EXPECT_EQ(available(), (SelfUpdateAvailability{label("corvane4"), "4.1", "4.0"}));
  tick(Apps{current("other")});
  EXPECT_TRUE(says("Installomator did not return label 'corvane4'; nothing to do."));
  tick(offering(nullptr));
  EXPECT_TRUE(says("No newVersion reported for 'corvane4'; assuming up to date."));
  EXPECT_TRUE(available()) << "not known is no answer";
  tick(offering("4.0"));
  EXPECT_TRUE(says("Running version 4.0 already satisfies available 4.0; no self-update needed."));
  EXPECT_FALSE(available());
  EXPECT_THAT(told(),
              ElementsAre("self-update-4.1: Version 4.1 is available (you have 4.0). Open Corvane to install."));
}

TEST_F(SelfUpdateSchedulerTest, aBuildNumberIsShownAsTheReleaseItBelongsTo) {
  std::filesystem::create_directories(places.labelsFolder());
  files.put(places.labelsFolder() / "corvane4.sh", "corvane4)\n    versionKey=\"CFBundleVersion\"\n    ;;\n");
  tick(offering("412"));
  EXPECT_EQ(available(), (SelfUpdateAvailability{label("corvane4"), "412", "4.0 (400)"})) << "without a network";
  set("SelfUpdateReleaseListURL", PlistValue("https://releases.example/list"));
  http.pages["https://releases.example/list"] = {.status = 200,
                                                 .body = R"json([{"tag_name":"v4.1","name":"4.1 (412)"}])json"};
  tick(offering("412"));
  EXPECT_EQ(available(), (SelfUpdateAvailability{label("corvane4"), "4.1 (412)", "4.0 (400)"}));
  http.pages.clear();
  tick(offering("412"));
  EXPECT_EQ(available()->availableVersion, "4.1 (412)") << "what was found before";
  EXPECT_EQ(told().back(),
            "self-update-412: Version 4.1 (412) is available (you have 4.0 (400)). Open Corvane to install.");
}

TEST_F(SelfUpdateSchedulerTest, withBackgroundPatchingItInstallsInSilence) {
  tick(offering("4.1"));
  center.added.clear();
  set("BackgroundPatchClosedAppsEnabled", PlistValue(true));
  tick(offering("4.2"));
  EXPECT_TRUE(says("Background-patch enabled — installing self-update silently 4.0 -> 4.2."));
  EXPECT_FALSE(available());
  EXPECT_THAT(told(), IsEmpty());
  EXPECT_THAT(running(), ElementsAre(label("corvane4")));
}

}  // namespace
}  // namespace corvane
