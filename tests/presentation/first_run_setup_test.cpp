// The wizard of the first start: what each step says in each state, and when it goes away.
#include "presentation/first_run_setup_page.h"

#include "presentation/first_run_setup_controller.h"
#include "workflow/workflow_fixture.h"

namespace corvane {
namespace {

constexpr Date kNow = VirtualMachine::kStart;

struct FirstRunSetupPageTest : ::testing::Test {
  [[nodiscard]] FirstRunSetupPage page() const {
    return makeFirstRunSetupPage({.fields = fields,
                                  .locale = locale,
                                  .now = kNow,
                                  .title = AppDisplayTitle(std::string_view("Corvane")),
                                  .helperStatus = status,
                                  .step2InProgressSince = since,
                                  .revealsLog = true});
  }
  // "state|description|control", with a "-" before a control that cannot be pressed.
  [[nodiscard]] std::string step(std::size_t index) const {
    const auto made = page().steps.at(index);
    const auto& control = made.control;
    return made.state + "|" + made.description + "|" + (control.visible && !control.enabled ? "-" : "") + control.text;
  }

  StatusFields fields;
  HelperStatus status = HelperStatus::notRegistered;
  std::optional<Date> since;
  ScriptedLocale locale;
};

TEST_F(FirstRunSetupPageTest, TheFirstStepFollowsTheHelper) {
  const auto registering =
      "pending|Click Register Helper to install the root LaunchDaemon. macOS will ask you to approve it once.|Register "
      "Helper";
  EXPECT_EQ(step(0), registering);
  status = HelperStatus::unknown;
  EXPECT_EQ(step(0), registering);
  status = HelperStatus::requiresApproval;
  EXPECT_EQ(step(0),
            "inProgress|Corvane needs approval in System Settings › Login Items & Extensions to install updates as "
            "root.|Open Login Items & Extensions");
  status = HelperStatus::enabled;
  EXPECT_EQ(step(0), "inProgress|Root helper registered. Waiting for it to start…|");
  fields.helper.helperOperational = true;
  EXPECT_EQ(step(0), "complete|Root helper is running.|");
}

TEST_F(FirstRunSetupPageTest, TheSecondStepChangesItsWordsAtThirtyAndNinetySeconds) {
  EXPECT_EQ(step(1), "pending|Installomator is deployed automatically once the helper is running.|");
  status = HelperStatus::enabled;
  fields.helper.helperOperational = true;
  const std::string downloading =
      "inProgress|Downloading Installomator into /Library/Application Support/Corvane…|Reveal Log";
  EXPECT_EQ(step(1), downloading) << "no start is noted";
  const auto after = [&](Duration elapsed) {
    since = kNow - elapsed;
    return step(1);
  };
  EXPECT_EQ(after(30s - 1ms), downloading);
  EXPECT_EQ(after(30s),
            "inProgress|Still downloading Installomator into /Library/Application Support/Corvane… (30 seconds)|Reveal "
            "Log");
  EXPECT_NE(after(90s - 1ms).find("Still downloading"), std::string::npos);
  EXPECT_EQ(after(90s),
            "inProgress|This is taking longer than usual (1 minute, 30 seconds). The root helper retries the download "
            "every 60 seconds. Tap Reveal Log to see what's happening, or check your network connection.|Reveal Log");
  fields.helper.helperOperational = false;
  fields.helper.installomatorAvailable = true;
  EXPECT_EQ(step(1), "complete|Installomator is deployed and ready.|") << "before the first step is";
}

TEST_F(FirstRunSetupPageTest, TheThirdStepScansOnceTheSecondIsDoneAndThenDoneIsOpen) {
  EXPECT_EQ(step(2), "pending|Available once Installomator is ready.|-Discover Apps");
  status = HelperStatus::enabled;
  fields.helper = {.helperOperational = true, .installomatorAvailable = true};
  EXPECT_EQ(step(2), "pending|Run a one-time scan so Corvane knows what's installed on this Mac.|Discover Apps");
  fields.gate.isLoading = true;
  EXPECT_EQ(step(2), "inProgress|Scanning installed applications…|");
  EXPECT_FALSE(page().done.enabled);
  EXPECT_EQ(page().done.help, "Finish all setup steps first.");
  EXPECT_TRUE(page().skip.enabled);
  fields.gate.isLoading = false;
  fields.inventory.lastDiscoveryDate = kNow;
  fields.inventory.apps = {current("quill")};
  EXPECT_TRUE(step(2).starts_with("complete|Found 1 app on ")) << step(2);
  fields.inventory.apps.push_back(current("tern"));
  EXPECT_TRUE(step(2).starts_with("complete|Found 2 apps on ")) << step(2);
  EXPECT_TRUE(page().done.enabled);
  EXPECT_EQ(page().done.help, "Continue to the dashboard.");
  fields.helper.firstRunSetupCompleted = true;
  EXPECT_EQ(page(), FirstRunSetupPage());
}

TEST_F(WorkflowTest, TheWizardNotesTheDownloadsStartFollowsItsTimeAndDoesNotComeBack) {
  setHelperAlive(false);
  setScript(false);
  build();
  int revealed = 0;
  FirstRunSetupController wizard(*model, services, [&] { ++revealed; });
  ASSERT_TRUE(wizard.page().visible);
  const auto second = [&] { return wizard.page().steps.at(1); };
  EXPECT_EQ(second().state, "pending");

  // Whoever else starts the helper, the wizard sees it within its refresh.
  setHelperAlive(true);
  time.advance(2 * FirstRunSetupController::kRefresh);
  EXPECT_EQ(second().state, "inProgress");
  EXPECT_TRUE(second().description.starts_with("Downloading")) << second().description;
  time.advance(35s);
  EXPECT_TRUE(second().description.starts_with("Still downloading")) << second().description;
  wizard.act("installomator");
  EXPECT_EQ(revealed, 1);

  wizard.finish();
  time.advance(2 * FirstRunSetupController::kRefresh);
  EXPECT_FALSE(wizard.page().visible);
  EXPECT_TRUE(preferences.readFirstRunSetupCompleted());
  EXPECT_TRUE(said("First-run setup marked complete."));
}

}  // namespace
}  // namespace corvane
