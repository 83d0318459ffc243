// Which labels a pass takes, and when it and the discoveries come.
#include "helper/background_pass.h"

#include "helper/own_schedule.h"
#include "platform/scripted/scripted_entropy.h"
#include "support/test.h"

namespace corvane {
namespace {

constexpr Date kNow = Date(std::chrono::sys_days(std::chrono::year(2026) / 11 / 20)) + 12h;

AppInfo outdated(const std::string& label) {
  AppInfo app;
  app.label = Label(label);
  app.name = label;
  app.packageID = "org.Example." + label;
  app.currentVersion = "1.0";
  app.newVersion = "2.0";
  app.appPath = "/Applications/" + label + ".app";
  return app;
}

PassFacts ordinaryFacts() {
  PassFacts facts;
  facts.config.workflowStageUpdates = true;
  return facts;
}

TEST(BackgroundPass, BeginsOnlyWhenEverySwitchAndConditionAllowsIt) {
  const auto config = [](bool enabled, BackgroundPatchSchedulerMode mode, bool onACOnly) {
    CorvaneConfiguration made;
    made.backgroundPatchClosedAppsEnabled = enabled;
    made.backgroundPatchClosedAppsScheduler = mode;
    made.backgroundPatchClosedAppsRequireOnAC = onACOnly;
    return made;
  };
  using enum BackgroundPatchSchedulerMode;
  const auto ours = config(true, helperDaemon, false);
  const auto onAC = config(true, helperDaemon, true);
  const PassConditions good{.toolReady = true, .cycleComplete = false, .onACPower = true};
  const std::tuple<CorvaneConfiguration, PassConditions, const char*> rows[] = {
      {ours, good, nullptr},
      {config(false, helperDaemon, false), good, "disabled"},
      {config(true, inApp, false), good, "mode changed"},
      {ours, {.toolReady = false, .onACPower = true}, "Installomator"},
      {ours, {.toolReady = true, .cycleComplete = true, .onACPower = true}, "complete for this cycle"},
      {ours, {.toolReady = true, .onACPower = false}, nullptr},
      {onAC, {.toolReady = true, .onACPower = false}, "battery"},
      {onAC, good, nullptr},
  };
  for (const auto& [configuration, conditions, expected] : rows) {
    const auto objection = passObjection(configuration, conditions);
    EXPECT_EQ(objection.has_value(), expected != nullptr);
    EXPECT_NE(objection.value_or("").find(expected ? expected : ""), std::string::npos) << *objection;
  }
}

TEST(BackgroundPass, TakesWhatIsPendingAndCertifiedClosedAndStagesAllThatIsPending) {
  struct Case {
    const char* what;
    std::function<void(AppInfo&, PassFacts&)> change;
    bool install;
    bool stage;
  };
  const Case cases[] = {
      {"outdated and closed", [](auto&, auto&) {}, true, true},
      {"check failed", [](auto& app, auto&) { app.updateCheckFailed = true; }, false, false},
      {"the store's by its record", [](auto& app, auto&) { app.macAppStoreManaged = true; }, false, false},
      {"the store's by its receipt", [](auto& app, auto& facts) { facts.storeCopies = {app.label}; }, false, false},
      {"the store's, taken over",
       [](auto& app, auto& facts) {
         app.macAppStoreManaged = true;
         facts.config.installomatorOptions = "IGNORE_APP_STORE_APPS=yes";
       },
       true, true},
      {"ignored", [](auto&, auto& facts) { facts.config.ignoredLabels = {"qui*"}; }, false, false},
      {"blocked", [](auto&, auto& facts) { facts.config.backgroundPatchClosedAppsBlockList = {"quill"}; }, false, true},
      {"not on the list", [](auto&, auto& facts) { facts.config.backgroundPatchClosedAppsAllowList = {"stamp"}; },
       false, true},
      {"on both lists",
       [](auto&, auto& facts) {
         facts.config.backgroundPatchClosedAppsAllowList = {"quill"};
         facts.config.backgroundPatchClosedAppsBlockList = {"quill"};
       },
       false, true},
      {"runs from its bundle", [](auto& app, auto& facts) { facts.running.paths = {*app.appPath}; }, false, true},
      {"runs elsewhere by its identifier",
       [](auto&, auto& facts) { facts.running.identifiers = {"org.example.quill"}; }, false, true},
      {"cannot be certified",
       [](auto& app, auto&) {
         app.appPath.reset();
         app.packageID.reset();
       },
       false, true},
      {"by its package alone", [](auto& app, auto&) { app.appPath.reset(); }, true, true},
      {"required and missing",
       [](auto& app, auto& facts) {
         app.appPath.reset();
         app.packageID.reset();
         app.currentVersion.reset();
         facts.config.requiredLabels = {"quill"};
       },
       true, true},
      {"held",
       [](auto& app, auto& facts) {
         facts.failures[app.label] = {
             .count = 3, .targetVersion = "2.0", .lastFailureAt = kNow, .holdingFailureAt = kNow};
       },
       false, false},
      {"held in an earlier cycle",
       [](auto& app, auto& facts) {
         facts.cycleStart = kNow;
         facts.failures[app.label] = {
             .count = 3, .targetVersion = "2.0", .lastFailureAt = kNow - 24h, .holdingFailureAt = kNow - 24h};
       },
       true, true},
      {"current, forced once a cycle as required",
       [](auto& app, auto& facts) {
         app.newVersion = "1.0";
         facts.cycleStart = kNow;
         facts.config.requiredLabels = {"quill"};
         facts.config.installomatorOptions = "INSTALL=force";
       },
       true, true},
      {"nothing is staged", [](auto&, auto& facts) { facts.config.workflowStageUpdates = false; }, true, false},
  };
  for (const auto& row : cases) {
    auto app = outdated("quill");
    auto facts = ordinaryFacts();
    row.change(app, facts);
    const auto decision = decidePass({app}, facts);
    EXPECT_EQ(decision.install, row.install ? Labels{app.label} : Labels{}) << row.what;
    EXPECT_EQ(decision.stage, row.stage ? Labels{app.label} : Labels{}) << row.what;
  }
}

TEST(BackgroundPass, SaysWhyAnOpenApplicationIsLeftOut) {
  auto facts = ordinaryFacts();
  facts.running.paths = {"/Applications/quill.app"};
  EXPECT_THAT(decidePass({outdated("quill"), outdated("stamp")}, facts).notes,
              ElementsAre("Skipping label 'quill' — /Applications/quill.app is currently running."));
}

TEST(OwnSchedule, TheFirstPassWaitsForTheRestOfTheIntervalOrSpreadsOverTheJitter) {
  ScriptedEntropy entropy;
  const PassPlan plan{.interval = 4h};
  const auto delay = [&](std::optional<Date> last) { return firstPassDelay(plan, last, kNow, 300s, entropy); };
  EXPECT_EQ(delay(std::nullopt), 300s);
  EXPECT_EQ(delay(kNow - 1h), 3h);
  EXPECT_EQ(delay(kNow - 4h + 10s), 300s) << "never at once";
  EXPECT_EQ(delay(kNow - 5h), 300s);
  EXPECT_EQ(delay(kNow + 1h), 300s) << "of a clock that was set back";
  std::set<std::chrono::seconds> spread;
  for (int i = 0; i < 50; ++i) {
    const auto jittered = firstPassDelay({.interval = 4h, .jitterMaxMinutes = 60}, kNow - 5min, kNow, 300s, entropy);
    EXPECT_GE(jittered, 300s);
    EXPECT_LE(jittered, 60min);
    spread.insert(jittered);
  }
  EXPECT_GT(spread.size(), 30U);
}

TEST(OwnSchedule, AnIntervalIsAnHourAtLeastAndAnAlarmStaysWithinReach) {
  CorvaneConfiguration config;
  config.backgroundPatchClosedAppsEnabled = true;
  config.backgroundPatchClosedAppsScheduler = BackgroundPatchSchedulerMode::helperDaemon;
  config.backgroundPatchClosedAppsIntervalHours = 0;
  EXPECT_EQ(passPlan(config).value().interval, 1h);
  const PassPlan plan{.interval = 4h};
  EXPECT_EQ(withinReach(kNow + 3h, plan, kNow), kNow + 3h);
  EXPECT_EQ(withinReach(kNow + 24h, plan, kNow), kNow + 4h);
}

TEST(OwnSchedule, ADiscoveryIsDueAnIntervalAfterTheLastFullCheckOfEither) {
  using enum DiscoveryFrequency;
  const std::tuple<DiscoveryFrequency, std::optional<Date>, std::optional<Date>, bool> rows[] = {
      {daily, std::nullopt, std::nullopt, true},     {off, std::nullopt, std::nullopt, false},
      {daily, kNow - 23h, std::nullopt, false},      {daily, kNow - 24h, std::nullopt, true},
      {daily, kNow - 48h, kNow - 1h, false},         {daily, std::nullopt, kNow - 25h, true},
      {weekly, kNow - 6 * 24h, std::nullopt, false}, {weekly, kNow - 8 * 24h, kNow - 7 * 24h, true},
      {daily, kNow + 1h, kNow + 2h, true},
  };
  for (const auto& [frequency, application, own, due] : rows)
    EXPECT_EQ(isDiscoveryDue(frequency, application, own, kNow), due);
}

}  // namespace
}  // namespace corvane
