#include "workflow/app_predicates.h"

#include "platform/scripted/scripted_locale.h"
#include "support/app_facts_setup.h"
#include "workflow_fixture.h"

namespace corvane {
namespace {

using testing::configure;

AppFacts plainFacts() {
  AppFacts facts;
  facts.hasAppStoreReceipt = [](const AppInfo& app) { return app.appPath == "/Applications/Store.app"; };
  facts.latestReceipts = std::make_shared<LatestReceipts>();
  return facts;
}

void hold(AppFacts& facts, const Label& label) {
  facts.failures[label] = {.count = 3, .targetVersion = "2.0", .lastFailureAt = Date(5h), .holdingFailureAt = Date(4h)};
  facts.failureTargets[label] = "2.0";
}

struct Row {
  const char* name;
  AppInfo app;
  bool needs, pending, alert, upToDate;
  std::function<void(AppFacts&)> facts = [](AppFacts&) {};
};

template <class Edit>
AppInfo edited(AppInfo app, Edit edit) {
  edit(app);
  return app;
}

TEST(AppPredicates, everyKindOfApplicationFallsWhereItBelongs) {
  const auto mismatched = [](AppInfo& app) { app.teamIDMismatch = true; };
  const auto failedCheck = [](AppInfo& app) { app.updateCheckFailed = true; };
  const auto storeManaged = [](AppInfo& app) { app.macAppStoreManaged = true; };
  const auto storeReceipt = [](AppInfo& app) { app.appPath = "/Applications/Store.app"; };
  const auto replacing = [](AppFacts& facts) { facts.replacesAppStoreApps = true; };
  const auto required = [](AppFacts& facts) {
    configure(facts, [](auto& config) { config.requiredLabels = {"qu*"}; });
  };
  const auto receipt = [](PatchingStatus status, std::int64_t code) {
    return [=](AppFacts& facts) {
      facts.latestReceipts = std::make_shared<LatestReceipts>(
          LatestReceipts{{Label("quill"), {.label = Label("quill"), .status = status, .installomatorExitCode = code}}});
    };
  };
  const auto held = [](AppFacts& facts) { hold(facts, Label("quill")); };
  const auto reinstalls = [&](AppFacts& facts) {
    required(facts);
    facts.reinstallsCurrentRequiredApps = true;
    facts.cycleStart = Date(1h);
    configure(facts, [](auto& config) { config.installomatorOptions = "INSTALL=force"; });
  };
  const auto quill = outdated("quill");
  const auto same = current("quill");
  const auto missing = makeApp({.label = "quill", .installed = nullptr, .latest = "2.0"});
  const Row rows[] = {
      {"outdated", quill, true, true, false, false},
      {"current", same, false, false, false, true},
      {"no version known", unchecked("quill"), false, false, false, false},
      {"missing and not required", missing, false, false, false, true},
      {"missing and required", missing, true, true, false, false, required},
      {"team mismatch is up to date, never pending", edited(quill, mismatched), false, false, false, true},
      {"team mismatch with a failed check", edited(edited(quill, mismatched), failedCheck), false, false, true, false},
      {"failed check", edited(quill, failedCheck), true, false, true, false},
      {"store copy", edited(quill, storeManaged), false, false, false, false},
      {"store copy by its receipt", edited(quill, storeReceipt), false, false, false, false},
      {"store copy with a failed check", edited(edited(quill, storeManaged), failedCheck), false, false, false, false},
      {"store copy that the options replace", edited(quill, storeManaged), true, true, false, false, replacing},
      {"last install failed", quill, true, true, true, false, receipt(PatchingStatus::failure, 2)},
      {"last install declined", quill, true, true, false, false, receipt(PatchingStatus::failure, 10)},
      {"last install went well", quill, true, true, false, false, receipt(PatchingStatus::success, 0)},
      {"current with an old failure", same, false, false, false, true, receipt(PatchingStatus::failure, 2)},
      {"held back", quill, true, true, true, false, held},
      {"required reinstall", same, true, true, false, false, reinstalls},
      {"required reinstall of a store copy", edited(same, storeManaged), false, false, false, false, reinstalls},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    auto facts = plainFacts();
    row.facts(facts);
    EXPECT_EQ(appNeedsUpdate(row.app, facts), row.needs);
    EXPECT_EQ(isPending(row.app, facts), row.pending);
    EXPECT_EQ(isAlert(row.app, facts), row.alert);
    EXPECT_EQ(isUpToDate(row.app, facts), row.upToDate);
  }
}

TEST(AppPredicates, countsFollowTheCycleAndLeaveHeldLabelsOut) {
  auto facts = plainFacts();
  hold(facts, Label("held"));
  const Apps apps{outdated("a"), outdated("held"), current("c"), unchecked("d")};
  EXPECT_EQ(deriveCounts(apps, facts), (AppCounts{1, 0, 1, 1}));
  facts.cycleComplete = true;
  EXPECT_EQ(deriveCounts(apps, facts), (AppCounts{0, 2, 1, 1}));
  EXPECT_EQ(deriveCounts({}, facts), AppCounts{});
}

TEST(AppPredicates, promptsAskAboutActionableLabelsThatAreNotHeld) {
  auto facts = plainFacts();
  facts.clearedLabels = {Label("cleared")};
  configure(facts, [](auto& config) { config.ignoredLabels = {"ign*"}; });
  InventoryFields inventory;
  inventory.apps = {outdated("b"), outdated("ignored"), outdated("cleared"), current("c"), outdated("a")};
  EXPECT_EQ(actionableUpdateLabels(inventory.apps, facts), (Labels{label("b"), label("cleared"), label("a")}));
  EXPECT_EQ(promptableUpdateLabels(inventory, facts), (Labels{label("b"), label("cleared"), label("a")}));
  facts.cycleComplete = true;  // the published message is not there yet
  EXPECT_EQ(promptableUpdateLabels(inventory, facts), (Labels{label("b"), label("a")}));
  inventory.cycleCompletionMessage = "done";
  EXPECT_TRUE(promptableUpdateLabels(inventory, facts).empty());
}

TEST(AppPredicates, filtersShowTheirBucketSortedByName) {
  auto facts = plainFacts();
  hold(facts, Label("held"));
  auto failed = outdated("failed");
  failed.updateCheckFailed = true;
  const Apps apps{unchecked("zeta"), outdated("held"), failed, current("Alpha"), outdated("beta10"), outdated("beta9")};
  const ScriptedLocale locale;
  const auto names = [&](FilterMode mode) {
    std::string all;
    for (const auto& app : filteredApps(apps, mode, facts, locale)) all += app.label.text + " ";
    return all;
  };
  EXPECT_EQ(names(FilterMode::all), "Alpha beta9 beta10 failed held zeta ");
  EXPECT_EQ(names(FilterMode::needsUpdate), "beta9 beta10 held ");
  EXPECT_EQ(names(FilterMode::alerts), "failed held ");
  EXPECT_EQ(names(FilterMode::upToDate), "Alpha ");
  EXPECT_EQ(uncheckedAppCount(apps), 1);
  EXPECT_EQ(updateCheckFailedCount(apps, facts), 1);
}

}  // namespace
}  // namespace corvane
