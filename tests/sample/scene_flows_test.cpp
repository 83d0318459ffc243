// What comes of a scene when the application starts on it, on virtual time.
#include <memory>

#include "background/deferral_watcher.h"
#include "presentation/deferral_prompt_controller.h"
#include "sample/sample_mac.h"
#include "sample/scenes.h"
#include "workflow/workflow_fixture.h"

namespace corvane::sample {
namespace {

class SceneFlowsTest : public WorkflowTest {
 protected:
  // The start, up to the answer of the check that comes before a prompt.
  void start(std::string_view scene) {
    const CorvaneConstants sample{.root = folder.path, .home = folder.path / "Users" / kUserName};
    put(folder.path / kMarker, "port 1\n");
    put(sample.userPreferencesPath(),
        writePlist(PlistDict{{"DiscoveredAppsData", PlistData{writeJson(toJson(apps_))}}}, PlistFormat::binary)
            .value());
    putScene(*sceneNamed(scene), folder.path, time.now() - 2s, locale.calendar());
    domains.setUser(valuesIn(sample.userPreferencesPath()));
    domains.setManaged(valuesIn(sample.managedPreferencesPath()));
    build();
    prompt_ = std::make_unique<DeferralPromptController>(*model, services);
    watcher_ = std::make_unique<DeferralWatcher>(*model, services);
    watcher_->start();
    settle();
    if (!helper.discoveries.empty()) answer(apps_);
  }
  static PlistDict valuesIn(const std::filesystem::path& file) { return *parsePlist(take(file)).value().root.dict(); }
  [[nodiscard]] const DeferralPromptPage& page() const { return prompt_->page(); }

  Apps apps_{outdated("quill"), outdated("rookeryserver"), current("larkspurnotes")};
  std::unique_ptr<DeferralPromptController> prompt_;
  std::unique_ptr<DeferralWatcher> watcher_;
  Lease heartbeat_ = time.main().every(15s, [this] { setHelperAlive(true); });
};

TEST_F(SceneFlowsTest, ThePromptComesAtOnceWithWhatIsLeft) {
  start("prompt");
  EXPECT_TRUE(page().visible);
  EXPECT_EQ(page().host, "standalone");
  EXPECT_EQ(page().rows.size(), 2U);
  EXPECT_TRUE(page().remaining.starts_with("2 deferrals remaining, or until Nov 4, 2026")) << page().remaining;
}

TEST_F(SceneFlowsTest, OnePressAndNothingElseLeadsToTheConfirmation) {
  start("confirmation");
  advance(9min);
  EXPECT_TRUE(page().visible);
  EXPECT_FALSE(page().confirmation.visible);
  EXPECT_FALSE(page().deferIsPrimary) << "Return is the other button";
  prompt_->install();
  settle();
  EXPECT_TRUE(page().confirmation.visible);
  EXPECT_TRUE(helper.runs.empty());
}

TEST_F(SceneFlowsTest, TheDeadlineInstallsWhenItsTwoMinutesAreOver) {
  start("hard");
  EXPECT_EQ(page().title, "Updates required");
  EXPECT_EQ(page().explanation, "You have used every deferral.");
  EXPECT_FALSE(page().mayClose);
  advance(119s);
  EXPECT_TRUE(helper.discoveries.empty());
  advance(2s);
  ASSERT_EQ(helper.discoveries.size(), 1U);
  answer(apps_);
  ASSERT_EQ(helper.runs.size(), 1U);
  EXPECT_EQ(helper.runs.front().labels, (Labels{Label("quill"), Label("rookeryserver")}));
}

TEST_F(SceneFlowsTest, ACompletedCycleIsLeftAlone) {
  start("completed-cycle");
  advance(10min);
  EXPECT_TRUE(fields().inventory.cycleCompletionMessage);
  EXPECT_EQ(fields().inventory.updatesAwaitingNextCycle, 2);
  EXPECT_EQ(fields().inventory.pendingUpdates, 0);
  EXPECT_TRUE(helper.discoveries.empty() && helper.runs.empty());
  EXPECT_FALSE(page().visible);
}

}  // namespace
}  // namespace corvane::sample
