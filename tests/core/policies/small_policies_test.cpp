// The policies of one question each.

#include "core/policies/at_login_pass_policy.h"
#include "core/policies/error_retry_watch.h"
#include "core/policies/focus_mode_detector.h"
#include "core/policies/gui_instance_policy.h"
#include "core/policies/login_item_agent_policy.h"
#include "core/policies/login_session.h"
#include "core/policies/menu_bar_icon_click_policy.h"
#include "core/policies/satisfied_deferral_cycle.h"
#include "core/policies/self_update_version_check.h"
#include "core/policies/self_update_version_display.h"
#include "core/policies/startup_jitter.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/scripted_http_client.h"
#include "platform/scripted/scripted_surroundings.h"
#include "support/scripted_preferences.h"
#include "support/test.h"

namespace corvane {
namespace {

constexpr Date kNow = VirtualMachine::kStart;

TEST(ErrorRetryWatch, WaitsForAnArmedRetryOnly) {
  using enum ErrorRetryState;
  EXPECT_EQ(ErrorRetryWatch::evaluate(false, kNow + 1h, kNow), inactive);
  EXPECT_EQ(ErrorRetryWatch::evaluate(true, kNow + 1s, kNow), wait);
  EXPECT_EQ(ErrorRetryWatch::evaluate(true, kNow, kNow), elapsed);
  EXPECT_EQ(ErrorRetryWatch::evaluate(true, std::nullopt, kNow), elapsed);
}

TEST(SatisfiedDeferralCycle, CompletesAnOpenCycleWithNothingLeftAndNothingInDoubt) {
  const DeferralInfo open{.focusDeferralCount = 1};
  EXPECT_TRUE(SatisfiedDeferralCycle::shouldComplete(open, {.knownApps = 5}));
  EXPECT_TRUE(SatisfiedDeferralCycle::shouldComplete({.hardDeferralCount = 2}, {.knownApps = 5}));
  EXPECT_FALSE(SatisfiedDeferralCycle::shouldComplete({}, {.knownApps = 5}));
  EXPECT_FALSE(SatisfiedDeferralCycle::shouldComplete(open, {}));
  EXPECT_FALSE(SatisfiedDeferralCycle::shouldComplete(open, {.knownApps = 5, .pendingUpdates = 1}));
  EXPECT_FALSE(SatisfiedDeferralCycle::shouldComplete(open, {.knownApps = 5, .inconclusiveChecks = 1}));
}

TEST(AtLoginPassPolicy, RunsOnceWithinTheWindowAfterALogin) {
  const auto window = AtLoginPassPolicy::window;
  EXPECT_TRUE(AtLoginPassPolicy::shouldRun(kNow, std::nullopt, kNow));
  EXPECT_TRUE(AtLoginPassPolicy::shouldRun(kNow, std::nullopt, kNow + window));
  EXPECT_FALSE(AtLoginPassPolicy::shouldRun(kNow, std::nullopt, kNow + window + 1s));
  EXPECT_FALSE(AtLoginPassPolicy::shouldRun(std::nullopt, std::nullopt, kNow));
  EXPECT_FALSE(AtLoginPassPolicy::shouldRun(kNow + 1min, std::nullopt, kNow)) << "the clock was set back";
  EXPECT_FALSE(AtLoginPassPolicy::shouldRun(kNow + 400ms, kNow, kNow + 5s)) << "stored without its fraction";
  EXPECT_TRUE(AtLoginPassPolicy::shouldRun(kNow, kNow - 1h, kNow)) << "an earlier session";
}

TEST(LoginSession, FindsTheUsersLatestConsoleSession) {
  ScriptedConsoleSessions console;
  EXPECT_FALSE(LoginSession::consoleLoginTime("ada", console)) << "not known yet";
  console.known = {{"ada", kNow - 2h}, {"ada", kNow - 1h}, {"ada", std::nullopt}, {"ben", kNow}, {"dan", std::nullopt}};
  EXPECT_EQ(LoginSession::consoleLoginTime("ada", console), kNow - 1h);
  EXPECT_FALSE(LoginSession::consoleLoginTime("cleo", console));
  EXPECT_FALSE(LoginSession::consoleLoginTime("dan", console));
}

TEST(GUIInstancePolicy, KnowsAStartByTheAgentFromOneThatOnlyInheritedItsSurroundings) {
  using Environment = GUIInstancePolicy::Environment;
  const Environment agent{{"CORVANE_LAUNCH_AGENT", "1"}};
  const Environment service{{"SYSTEMD_EXEC_PID", "77"}};
  EXPECT_TRUE(GUIInstancePolicy::launchedByAgent(agent));
  EXPECT_FALSE(GUIInstancePolicy::launchedByAgent({{"CORVANE_LAUNCH_AGENT", ""}}));
  EXPECT_FALSE(GUIInstancePolicy::launchedByAgent(service));
  EXPECT_TRUE(GUIInstancePolicy::launchedByLaunchdJob(agent, 5));
  EXPECT_TRUE(GUIInstancePolicy::launchedByLaunchdJob(service, 77));
  EXPECT_FALSE(GUIInstancePolicy::launchedByLaunchdJob(service, 78)) << "a child of what was started";
  EXPECT_FALSE(GUIInstancePolicy::launchedByLaunchdJob({{"INVOCATION_ID", "abc"}}, 78));
}

TEST(GUIInstancePolicy, LetsTheAgentReplaceAndOthersYield) {
  using enum GUIInstanceClaim;
  EXPECT_EQ(GUIInstancePolicy::claim(false, false), primary);
  EXPECT_EQ(GUIInstancePolicy::claim(false, true), primary);
  EXPECT_EQ(GUIInstancePolicy::claim(true, true), replaceExisting);
  EXPECT_EQ(GUIInstancePolicy::claim(true, false), yield);
}

TEST(FocusModeDetector, SplitsTheIgnoreListAtCommas) {
  using List = std::vector<std::string>;
  EXPECT_EQ(FocusModeDetector::parseIgnoreList(" Final Cut Pro, Safari,,\t ,zoom.us\n"),
            (List{"Final Cut Pro", "Safari", "zoom.us"}));
  EXPECT_EQ(FocusModeDetector::parseIgnoreList(""), List{});
  EXPECT_EQ(FocusModeDetector::parseIgnoreList(","), List{});
}

TEST(FocusModeDetector, WeighsDoNotDisturbAndWhoKeepsTheDisplayAwake) {
  const std::vector<std::string> ignored{"caffeinate", "Final Cut Pro"};
  using Holders = std::optional<std::vector<std::string>>;
  const Holders none(std::in_place);
  const Holders zoom({"zoom.us"});
  const Holders unreadable;
  const std::tuple<std::optional<bool>, Holders, bool, const char*> rows[] = {
      {false, none, false, "Do Not Disturb off, no display assertion"},
      {true, none, true, "Do Not Disturb on, no display assertion"},
      {false,
       {{"Caffeinate", "final cut pro"}},
       false,
       "Do Not Disturb off, display kept awake by ignored Caffeinate, final cut pro"},
      {false, {{"caffeinate", "zoom.us"}}, true, "Do Not Disturb off, display kept awake by zoom.us"},
      {std::nullopt, zoom, true, "Do Not Disturb unreadable, display kept awake by zoom.us"},
      {true, unreadable, true, "Do Not Disturb on, display assertions unreadable"},
      {std::nullopt, unreadable, false, "Do Not Disturb unreadable, display assertions unreadable"},
  };
  for (const auto& [disturbed, holders, active, diagnostic] : rows) {
    ScriptedFocusState state;
    state.disturbed = disturbed;
    state.holders = holders;
    EXPECT_EQ(FocusModeDetector::evaluate(state, ignored),
              (FocusModeDetector::Evaluation{.isActive = active,
                                             .doNotDisturbUnreadable = !disturbed,
                                             .displayCheckInconclusive = !holders,
                                             .diagnostic = diagnostic}));
  }
}

TEST(LoginItemAgentPolicy, FollowsTheSettingsUnlessTheOrganisationHasItsOwnAgent) {
  using Policy = LoginItemAgentPolicy;
  for (const bool open : {false, true})
    for (const bool keep : {false, true})
      EXPECT_EQ(Policy::reconciliation(true, {open, keep}), Policy::Reconciliation(Policy::DeferToSystemAgent{}));
  EXPECT_EQ(Policy::reconciliation(false, {false, false}), Policy::Reconciliation(Policy::Remove{}));
  EXPECT_EQ(Policy::reconciliation(false, {true, false}), Policy::Reconciliation(Policy::Install{true, false}));
  for (const bool open : {false, true})
    EXPECT_EQ(Policy::reconciliation(false, {open, true}), Policy::Reconciliation(Policy::Install{true, true}));
}

TEST(MenuBarIconClickPolicy, AClickThatClosesThePanelDoesNotOpenItAgain) {
  using Policy = MenuBarIconClickPolicy;
  using enum Policy::Phase;
  using enum Policy::Action;
  const auto down = Policy::action(mouseDown, true, false);
  EXPECT_EQ(down, (Policy::Decision{toggleClosed, true}));
  EXPECT_EQ(Policy::action(mouseUp, false, down.swallowMouseUp), (Policy::Decision{swallow, false}));
  EXPECT_EQ(Policy::action(mouseDown, false, false), (Policy::Decision{deliver, false}));
  EXPECT_EQ(Policy::action(mouseUp, true, false), (Policy::Decision{deliver, false}));
  EXPECT_EQ(Policy::action(mouseDown, false, true), (Policy::Decision{deliver, false})) << "a release that never came";
}

TEST(StartupJitter, SpreadsOverTheWholeSpanAndFallsBackWithoutOne) {
  ScriptedEntropy entropy;
  EXPECT_EQ(resolvedStartupJitterDelay(0, 300s, entropy), 300s);
  EXPECT_EQ(resolvedStartupJitterDelay(-4, 300s, entropy), 300s);
  auto least = 60s;
  auto most = 0s;
  for (int i = 0; i < 2000; ++i) {
    const auto delay = resolvedStartupJitterDelay(1, 300s, entropy);
    least = std::min(least, delay);
    most = std::max(most, delay);
  }
  EXPECT_EQ(least, 0s);
  EXPECT_EQ(most, 60s);
  EXPECT_LE(resolvedStartupJitterDelay(std::numeric_limits<std::int64_t>::max(), 300s, entropy), 168h);
}

TEST(SelfUpdateVersionCheck, ReadsTheVersionKeyThatALabelDeclares) {
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {"corvane4)\n    name=\"Corvane\"\n    versionKey=\"CFBundleVersion\"\n    ;;\n", "CFBundleVersion"},
      {"versionKey='CFBundleShortVersionString'", "CFBundleShortVersionString"},
      {"versionKey=CFBundleVersion # the build", "CFBundleVersion"},
      {"# versionKey=\"CFBundleVersion\"\nname=\"x\"\n", std::nullopt},
      {"versionKey=\"$(echo CFBundleVersion)\"", std::nullopt},
      {"versionKey=\"CFBundle", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [source, key] : cases) EXPECT_EQ(SelfUpdateVersionCheck::versionKey(source), key) << source;
}

TEST(SelfUpdateVersionCheck, ReadsNoFileOutsideTheLabelsFolder) {
  VirtualMachine machine;
  ScriptedFiles files(machine.clock());
  files.put("/fragments/labels/corvane4.sh", "corvane4)\n;;\n");
  files.put("/fragments/secret.sh", "secret");
  const auto source = [&](const char* name) {
    return SelfUpdateVersionCheck::labelSource(Label(name), "/fragments", files);
  };
  EXPECT_EQ(source("corvane4"), "corvane4)\n;;\n");
  EXPECT_EQ(source("missing"), "");
  EXPECT_EQ(source("../secret"), "");
  EXPECT_EQ(source(""), "");
}

TEST(SelfUpdateVersionCheck, ComparesTheFormThatTheLabelNames) {
  const RunningVersions running{.shortVersion = "4.2", .bundleVersion = "1234"};
  const std::optional<std::string> build = "CFBundleVersion";
  const auto needsUpdate = [&](const RunningVersions& versions, const char* available,
                               const std::optional<std::string>& key) {
    return SelfUpdateVersionCheck::needsUpdate(versions, available, key, VersionComparisonMethod::isAtLeast);
  };
  EXPECT_TRUE(needsUpdate(running, "1235", build));
  EXPECT_FALSE(needsUpdate(running, "1234", build));
  EXPECT_TRUE(needsUpdate(running, "4.3", std::nullopt));
  EXPECT_FALSE(needsUpdate(running, "4.2.0", std::nullopt));
  EXPECT_FALSE(needsUpdate({}, "4.3", std::nullopt)) << "a version that is not known is never replaced blindly";
  EXPECT_FALSE(needsUpdate(running, "", std::nullopt));
  EXPECT_EQ(SelfUpdateVersionCheck::displayedRunningVersion(running, build), "1234");
  EXPECT_EQ(SelfUpdateVersionCheck::displayedRunningVersion(running, "CFBundleShortVersionString"), "4.2");
  EXPECT_EQ(SelfUpdateVersionCheck::displayedRunningVersion({.shortVersion = " "}, std::nullopt), std::nullopt);
}

TEST(SelfUpdateVersionDisplay, CombinesVersionAndBuild) {
  EXPECT_EQ(SelfUpdateVersionDisplay::combined("4.2", "1234"), "4.2 (1234)");
  EXPECT_EQ(SelfUpdateVersionDisplay::combined("4.2", "4.2"), "4.2");
  EXPECT_EQ(SelfUpdateVersionDisplay::combined(std::nullopt, "1234"), "1234");
  EXPECT_EQ(SelfUpdateVersionDisplay::combined("4.2", ""), "4.2");
  EXPECT_EQ(SelfUpdateVersionDisplay::combined(std::nullopt, std::nullopt), std::nullopt);
  EXPECT_TRUE(SelfUpdateVersionDisplay::isBuildNumber("20261122"));
  EXPECT_FALSE(SelfUpdateVersionDisplay::isBuildNumber("4.2"));
  EXPECT_FALSE(SelfUpdateVersionDisplay::isBuildNumber(""));
}

TEST(SelfUpdateVersionDisplay, ReadsTheVersionOfABuildFromTheReleases) {
  const std::string releases = R"json([
    {"tag_name": "v4.3-beta", "name": "Corvane 4.3 (12345)"},
    {"tag_name": "v4.2.1", "name": "Corvane 4.2.1 (1234)"},
    {"tag_name": "b777", "name": "Four point one, 4.1"},
    {"tag_name": "b778", "name": null}, 5])json";
  const std::pair<const char*, std::optional<std::string>> builds[] = {{"1234", "4.2.1 (1234)"},
                                                                       {"12345", "4.3 (12345)"},
                                                                       {"777", "4.1 (777)"},
                                                                       {"778", {}},
                                                                       {"123", {}},
                                                                       {"4", {}},
                                                                       {"4.2.1", {}},
                                                                       {"", {}}};
  for (const auto& [build, display] : builds)
    EXPECT_EQ(SelfUpdateVersionDisplay::displayIn(releases, build), display) << build;
  for (const auto* damaged : {"", "{}", "[", "[{\"name\":7}]"})
    EXPECT_FALSE(SelfUpdateVersionDisplay::displayIn(damaged, "1234")) << damaged;
}

struct VersionDisplayTest : ::testing::Test, testing::ScriptedPreferences {};

TEST_F(VersionDisplayTest, AsksOnceADayAndKeepsTheLastAnswer) {
  ScriptedHttpClient http{machine.main()};
  const auto refresh = [&](const char* build) {
    std::optional<std::optional<std::string>> answer;
    SelfUpdateVersionDisplay::refresh(build, {preferences, http, machine.clock()},
                                      [&](std::optional<std::string> display) { answer = std::move(display); });
    machine.advance(SelfUpdateVersionDisplay::kTimeLimit);
    return answer.value();
  };
  EXPECT_EQ(refresh("1234"), std::nullopt) << "no address";
  EXPECT_TRUE(http.requests().empty());

  const std::string address = "https://releases.example.org/list";
  domains.setManaged({{"SelfUpdateReleaseListURL", address}});
  EXPECT_EQ(refresh("1234"), std::nullopt) << "out of reach";
  http.pages[address] = {.status = 200, .body = R"json([{"tag_name": "v4.2", "name": "(1234)"}])json"};
  EXPECT_EQ(refresh("1234"), "4.2 (1234)");
  EXPECT_EQ(refresh("1234"), "4.2 (1234)");
  EXPECT_EQ(http.requests().size(), 2U);
  EXPECT_EQ(refresh("99"), std::nullopt) << "another build is another question";

  machine.advance(SelfUpdateVersionDisplay::kFreshFor);
  http.pages[address].status = 503;
  EXPECT_EQ(refresh("1234"), std::nullopt);
  EXPECT_EQ(http.requests().size(), 4U);
  EXPECT_EQ(SelfUpdateVersionDisplay::cachedDisplay("1234", preferences), "4.2 (1234)");
  EXPECT_EQ(SelfUpdateVersionDisplay::cachedDisplay("99", preferences), std::nullopt);
}

}  // namespace
}  // namespace corvane
