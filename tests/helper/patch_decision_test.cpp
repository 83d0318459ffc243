#include "helper/patch_decision.h"

#include "core/policies/installomator_exit_code.h"
#include "support/test.h"

namespace corvane {
namespace {

AppInfo app(std::optional<std::string> installed, std::optional<std::string> latest) {
  AppInfo info;
  info.label = Label("quill");
  info.name = "Quill";
  info.currentVersion = std::move(installed);
  info.newVersion = std::move(latest);
  if (info.currentVersion) info.appPath = "/Applications/Quill.app";
  return info;
}

TEST(PatchDecision, GuardsAgainstDowngradesBeforeTheToolRuns) {
  CorvaneConfiguration config;
  CorvaneConfiguration exact;
  exact.versionComparisonMethod = VersionComparisonMethod::equalTo;
  CorvaneConfiguration forced;
  forced.installomatorOptions = "INSTALL=force";
  forced.requiredLabels = {"quill"};
  CorvaneConfiguration forcedOther = forced;
  forcedOther.requiredLabels = {"other"};
  CorvaneConfiguration ignoring;
  ignoring.ignoredLabels = {"qui*"};
  AppInfo mismatched = app("1.0", "2.0");
  mismatched.teamIDMismatch = true;
  const struct {
    const char* what;
    std::optional<AppInfo> app;
    CorvaneConfiguration config;
    PatchStep step;
  } rows[] = {
      {"older", app("1.0", "2.0"), config, PatchStep::install},
      {"equal by value", app("1.10", "1.10.0"), config, PatchStep::leaveCurrent},
      {"newer than the label", app("3.0", "2.0"), config, PatchStep::leaveCurrent},
      {"newer, but the exact version is wanted", app("3.0", "2.0"), exact, PatchStep::install},
      {"not installed", app(std::nullopt, "2.0"), config, PatchStep::install},
      {"latest unknown", app("1.0", std::nullopt), config, PatchStep::install},
      {"current, reinstalled as required", app("2.0", "2.0"), forced, PatchStep::install},
      {"current, another is required", app("2.0", "2.0"), forcedOther, PatchStep::leaveCurrent},
      {"not in the catalogue", std::nullopt, config, PatchStep::refuseUnknown},
      {"left out by the settings", std::nullopt, ignoring, PatchStep::refuseIgnored},
      {"signed by another team", mismatched, forced, PatchStep::refuseMismatch},
  };
  for (const auto& row : rows) EXPECT_EQ(decideBeforeRun(Label("quill"), row.app, row.config), row.step) << row.what;
  for (const auto step : {PatchStep::refuseUnknown, PatchStep::refuseIgnored, PatchStep::refuseMismatch}) {
    const auto outcome = outcomeWithoutRun(step, Label("quill"), mismatched);
    EXPECT_EQ(outcome.status, PatchingStatus::failure);
    EXPECT_FALSE(outcome.receipt);
    EXPECT_EQ(answerOf({outcome}).message, "Updated 0 of 1. Failed: quill.");
  }
  EXPECT_FALSE(outcomeWithoutRun(PatchStep::leaveCurrent, Label("quill"), app("2.0", "2.0")).receipt)
      << "receipts tell of installs";
}

TEST(PatchDecision, BelievesTheInstalledVersionAndNotTheExitCode) {
  using enum PatchingStatus;
  const auto old = app("1.0", "2.0");
  const auto unknown = app("1.0", {});  // what the vendor offers
  const auto now = [](const char* version) { return app(version, {}); };
  const ToolEnd well{.code = 0};
  const ToolEnd tellsTwo{.code = 0, .words = {.latestVersion = "2.0"}};
  const ToolEnd saysCurrent{.code = 0, .words = {.saysCurrent = true}};
  const ToolEnd late{.code = 143, .timedOut = true};
  const ToolEnd lateAtDialog{.code = 143, .timedOut = true, .words = {.atDialog = true}};
  const std::tuple<const char*, AppInfo, std::optional<AppInfo>, ToolEnd, PatchingStatus, std::int64_t, bool> rows[] = {
      {"reached", old, now("2.0"), well, success, 0, true},
      {"beyond", old, now("2.1"), well, success, 0, true},
      {"still the old one", old, now("1.0"), well, failure, -1, false},
      {"half way", old, now("1.5"), well, failure, -1, false},
      {"nothing there", app({}, "2.0"), app({}, {}), well, failure, -1, false},
      {"not read again", old, std::nullopt, well, failure, -2, false},
      {"failed and not read again", old, std::nullopt, {.code = 2}, failure, 2, false},
      {"failed, though changed", old, now("2.0"), {.code = 3}, failure, 3, false},
      {"target unknown, changed", unknown, now("1.1"), well, success, 0, true},
      {"target unknown, unchanged", unknown, now("1.0"), well, failure, -1, false},
      {"target unknown, the tool tells it", unknown, now("2.0"), tellsTwo, success, 0, true},
      {"target unknown, the tool tells it and does not reach it", unknown, now("1.5"), tellsTwo, failure, -1, false},
      {"target unknown, nothing newer", unknown, now("1.0"), saysCurrent, success, 0, false},
      {"nobody answered", old, now("1.0"), lateAtDialog, skipped, 25, false},
      {"reinstalled", app("2.0", "2.0"), now("2.0"), well, success, 0, true},
      {"declined", old, now("1.0"), {.code = 10}, skipped, 10, false},
      {"blocked", old, now("1.0"), {.code = 11}, skipped, 11, false},
      {"store copy", old, now("1.0"), {.code = 23}, skipped, 23, false},
      {"download failed", old, now("1.0"), {.code = 2}, failure, 2, false},
      {"took too long", old, now("1.0"), late, failure, 143, false},
  };
  for (const auto& [what, before, after, end, status, code, installed] : rows) {
    const auto outcome = outcomeOfRun(before, after, end, {});
    EXPECT_EQ(outcome.status, status) << what;
    EXPECT_EQ(outcome.code, code) << what;
    EXPECT_EQ(outcome.installed, installed) << what;
    const auto& target = before.newVersion ? before.newVersion : end.words.latestVersion;
    EXPECT_EQ(receiptOf(outcome, Date{}).targetVersion, target) << what;
  }
}

TEST(PatchDecision, ListensToTheToolsWords) {
  const auto after = [](std::vector<std::string> messages) {
    ToolWords words;
    for (const auto& message : messages) words.take("2026-11-22 21:04:42 : INFO  : quill : " + message);
    return words;
  };
  EXPECT_EQ(after({"Latest version of Quill is 2.0", "found blocking process Quill"}),
            (ToolWords{.latestVersion = "2.0", .atDialog = true}));
  EXPECT_FALSE(after({"found blocking process Quill", "Installing Quill"}).atDialog);
  EXPECT_TRUE(after({"There is no newer version available.", "No newer version."}).saysCurrent);
  EXPECT_EQ(after({"Downloaded version of Quill is 2.0 on versionKey K, same as installed."}),
            (ToolWords{.latestVersion = "2.0", .saysCurrent = true}));
  ToolWords page;
  page.take("No newer version.");
  EXPECT_EQ(page, ToolWords{}) << "not the tool's own line";
}

TEST(PatchDecision, WaitsAsLongAsThePromptIsConfiguredTo) {
  const std::pair<const char*, Duration> rows[] = {
      {"", 2h},
      {"BLOCKING_PROCESS_ACTION=tell_user PROMPT_TIMEOUT=86400", 2h},
      {"BLOCKING_PROCESS_ACTION=prompt_user", 25h},
      {"BLOCKING_PROCESS_ACTION=prompt_user_loop PROMPT_TIMEOUT=60", 2h},
      {"BLOCKING_PROCESS_ACTION=prompt_user PROMPT_TIMEOUT=-9", 2h},
      {"BLOCKING_PROCESS_ACTION=prompt_user PROMPT_TIMEOUT=9000000000000000000", 169h},
  };
  for (const auto& [options, limit] : rows) {
    CorvaneConfiguration config;
    config.installomatorOptions = options;
    EXPECT_EQ(toolTimeLimit(config), limit) << options;
  }
}

TEST(PatchDecision, WordsTheAnswerFromAllOutcomes) {
  const PatchOutcome installed{.label = Label("a"), .installed = true};
  const PatchOutcome current{.label = Label("b")};
  const PatchOutcome failed{.label = Label("c"), .status = PatchingStatus::failure, .code = 2};
  const PatchOutcome alsoFailed{.label = Label("d"), .status = PatchingStatus::failure, .code = -1};
  const PatchOutcome declined{.label = Label("e"), .status = PatchingStatus::skipped, .code = 10};
  EXPECT_EQ(answerOf({installed, current}), (PatchRunAnswer{true, "Updated 1 of 2.", 1}));
  EXPECT_EQ(answerOf({installed, failed, alsoFailed}), (PatchRunAnswer{false, "Updated 1 of 3. Failed: c, d.", 1}));
  EXPECT_EQ(answerOf({declined}), (PatchRunAnswer{true, "Updated 0 of 1. Skipped: e.", 0}))
      << "who declines has made no failure";
  EXPECT_EQ(answerOf({declined, failed}), (PatchRunAnswer{false, "Updated 0 of 2. Skipped: e. Failed: c.", 0}));
}

}  // namespace
}  // namespace corvane
