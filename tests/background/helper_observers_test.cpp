// What the helper writes becomes broadcasts, each told once.

#include "background/background_fixture.h"
#include "background/background_notices.h"
#include "background/helper_background_patch_observer.h"
#include "background/helper_scheduled_discovery_observer.h"
#include "core/records/notifications.h"

namespace corvane {
namespace {

struct HelperObserversTest : BackgroundTest {
  HelperObserversTest() {
    set("BackgroundPatchClosedAppsScheduler", PlistValue("helperDaemon"));
    set("BackgroundPatchClosedAppsNotifyOnCompletion", PlistValue(true));
  }
  HelperBackgroundCurrentRun run(const char* id, Duration ago = 1s, std::int64_t done = 0) {
    return {.runID = id,
            .startedAt = time.now() - ago,
            .totalLabels = 3,
            .completedCount = done,
            .currentLabel = "quill",
            .currentLabelDisplayName = "Quill"};
  }
  BackgroundPatchSummary summary(const char* id, Duration ago = 1s) {
    return {.runID = id,
            .completedAt = time.now() - ago,
            .labels = {label("quill"), label("pen")},
            .totalLabels = 2,
            .patchedCount = 2};
  }
  std::vector<std::string> heard() { return std::exchange(heard_, {}); }
  [[nodiscard]] bool says(std::string_view line) const {
    return log.holds("HelperBackgroundPatchObserver: " + std::string(line));
  }

 private:
  std::vector<std::string> heard_;
  template <class N>
  Lease hear(std::string (*words)(const N&)) {
    return notifications.observe<N>([this, words](const N& told) { heard_.push_back(words(told)); });
  }
  Lease leases_[5] = {
      hear<CorvaneHelperPassStarted>([](const auto& pass) { return "started " + pass.runID; }),
      hear<CorvaneHelperPassProgress>([](const auto& pass) {
        return fmt::format("{} {} of {}", pass.runID, pass.completedCount, pass.totalLabels);
      }),
      hear<CorvaneHelperPassEnded>([](const auto& pass) { return "ended " + pass.runID; }),
      hear<CorvaneHelperPassCompleted>([](const auto& pass) {
        return fmt::format("completed {}: {}{}", pass.runID, joined(pass.labels), pass.hasFailures ? " failing" : "");
      }),
      hear<CorvaneScheduledDiscoveryCompleted>([](const auto& discovery) {
        return fmt::format("discovered {}: {}, {}", discovery.runID, discovery.appCount, discovery.pendingUpdateCount);
      }),
  };
};

TEST_F(HelperObserversTest, aPassIsFollowedFromItsBeginningToItsEnd) {
  HelperBackgroundPatchObserver observer(background);
  observer.start();
  writeState({.currentRun = run("r")});
  advance(62s);
  EXPECT_THAT(heard(), ElementsAre("started r"));
  EXPECT_TRUE(says("Posted .corvaneHelperPassStarted for runID r (totalLabels=3, currentLabel=quill)."));
  EXPECT_TRUE(says("Adjusting poll cadence to 5s (in-flight: true)."));
  advance(6s);
  EXPECT_THAT(heard(), ElementsAre("r 0 of 3"));
  advance(60s);
  EXPECT_THAT(heard(), IsEmpty()) << "nothing moved";
  writeState({.currentRun = run("r", 2min, 1)});
  advance(6s);
  EXPECT_THAT(heard(), ElementsAre("r 1 of 3"));
  writeState({.lastBackgroundPatchSummary = summary("r")});
  advance(6s);
  EXPECT_THAT(heard(), ElementsAre("ended r", "completed r: quill, pen"));
  EXPECT_TRUE(says("Pass r is no longer in flight (no pass in flight)."));
  EXPECT_TRUE(says("Adjusting poll cadence to 60s (in-flight: false)."));
  EXPECT_THAT(told(), ElementsAre("helper-background-patch-start-r: Updating Quill and 2 more in the background…",
                                  "helper-background-patch-r: Updated 2 apps in the background."));
  EXPECT_TRUE(says("Posted completion notification for runID r."));
  ASSERT_NE(signals.find("Corvane.Patching.Background.completed"), nullptr);
  EXPECT_EQ(signals.find("Corvane.Patching.Background.completed")->floatValue, 2.0);
}

TEST_F(HelperObserversTest, aPassThatIsOldStaleReplacedOrUnreadable) {
  HelperBackgroundPatchObserver observer(background);
  observer.start();
  const auto polls = [&](const HelperPatchState& state) {
    writeState(state);
    observer.poll();
    settle();
  };
  polls({.currentRun = run("old", 601s)});
  EXPECT_THAT(heard(), ElementsAre("started old"));
  EXPECT_THAT(told(), IsEmpty()) << "nobody wants to hear now of what began long ago";
  polls({.currentRun = run("new")});
  EXPECT_THAT(heard(), ElementsAre("ended old", "started new"));
  polls({.currentRun = run("new", 3601s)});
  EXPECT_THAT(heard(), ElementsAre("ended new"));
  EXPECT_TRUE(says("Ignoring stale currentRun new (age 3601s > 3600s gate)."));
  polls({.currentRun = run("new")});
  files.put(places.helperState(), "{\"currentRun\":");
  observer.poll();
  polls({.currentRun = run("new")});
  EXPECT_THAT(heard(), ElementsAre("started new", "ended new", "started new"));
  set("BackgroundPatchClosedAppsScheduler", PlistValue("inApp"));
  advance(60s);
  EXPECT_THAT(heard(), ElementsAre("ended new"));
  EXPECT_TRUE(says("Pass new is no longer in flight (helper scheduler is no longer selected)."));
  set("BackgroundPatchClosedAppsScheduler", PlistValue("helperDaemon"));
  advance(10min);
  EXPECT_THAT(heard(), IsEmpty()) << "only a start goes on";
}

TEST_F(HelperObserversTest, aFirstStartTellsOnlyOfWhatIsFresh) {
  writeState(
      {.lastBackgroundPatchSummary = summary("r", 601s),
       .lastScheduledDiscoverySummary = ScheduledDiscoverySummary{.runID = "d", .completedAt = time.now() - 601s}});
  HelperBackgroundPatchObserver(background).start();
  HelperScheduledDiscoveryObserver(background).start();
  EXPECT_THAT(heard(), IsEmpty());
  EXPECT_TRUE(says("Seeded last-observed runID r silently (pass completed 601s ago, outside the 600s seed window)."));
  preferences.deletePreference("LastObservedHelperPatchRunID");
  preferences.deletePreference("LastObservedScheduledDiscoveryRunID");
  writeState({.lastBackgroundPatchSummary = summary("s", 600s),
              .lastScheduledDiscoverySummary = ScheduledDiscoverySummary{
                  .runID = "e", .completedAt = time.now() - 600s, .appCount = 7, .pendingUpdateCount = 2}});
  HelperBackgroundPatchObserver observer(background);
  HelperScheduledDiscoveryObserver discoveries(background);
  observer.start();
  discoveries.start();
  EXPECT_THAT(heard(), ElementsAre("completed s: quill, pen", "discovered e: 7, 2"));
  observer.start();
  discoveries.start();
  HelperBackgroundPatchObserver(background).start();
  advance(10min);
  EXPECT_THAT(heard(), IsEmpty()) << "each is told once, also across launches";
  writeState({.lastScheduledDiscoverySummary = ScheduledDiscoverySummary{.runID = "f", .completedAt = time.now()}});
  advance(75s);
  EXPECT_THAT(heard(), ElementsAre("discovered f: 0, 0"));
}

TEST_F(HelperObserversTest, theEndOfAPassInItsWords) {
  auto failing = summary("r");
  failing.labels = {label("a"), label("b"), label("c"), label("d")};
  failing.hasFailures = true;
  failing.failureCount = 2;
  failing.totalLabels = 4;
  const auto body = [](const BackgroundPatchSummary& of) {
    const auto notice = helperPassEndedNotice(of);
    return notice ? notice->body : "<none>";
  };
  EXPECT_EQ(body(failing), "2 of 4 updates failed (e.g. a, b, c). Open Corvane for details.");
  failing.totalLabels = 0;
  EXPECT_EQ(body(failing), "Some apps could not be updated. Open Corvane for details.");
  auto well = summary("r");
  well.patchedCount = 1;
  EXPECT_EQ(body(well), "Updated 1 app in the background.");
  well.patchedCount = 0;
  EXPECT_EQ(body(well), "<none>");
  auto unnamed = run("r");
  unnamed.currentLabelDisplayName.reset();
  unnamed.totalLabels = 1;
  EXPECT_EQ(helperPassStartedNotice(unnamed)->body, "Updating quill in the background…");
  unnamed.currentLabel.reset();
  EXPECT_FALSE(helperPassStartedNotice(unnamed));
}

}  // namespace
}  // namespace corvane
