#include "core/policies/label_history.h"

#include "core/preferences/configuration.h"
#include "support/test.h"

namespace corvane {
namespace {

using enum PatchingStatus;

const Label kQuill("quill");
const Date kStart = Date(std::chrono::sys_days(std::chrono::year(2026) / 11 / 16));

struct Outcome {
  PatchingStatus status;
  std::int64_t code;
  std::optional<std::string> target = "2.0";
};

// Receipts of one label, an hour apart, given oldest first and returned newest first.
std::vector<PatchingReceipt> receipts(const std::vector<Outcome>& runs, Date first = kStart) {
  std::vector<PatchingReceipt> list;
  for (const auto& run : runs) {
    list.insert(list.begin(), {.label = kQuill,
                               .timestamp = first,
                               .status = run.status,
                               .targetVersion = run.target,
                               .installomatorExitCode = run.code});
    first += 1h;
  }
  return list;
}

bool held(const std::vector<Outcome>& runs, std::optional<std::string> target = "2.0",
          std::optional<Date> cycleStart = kStart) {
  return LabelFailureHistory::isHeld(kQuill, target, cycleStart, LabelFailureHistory::failureRecords(receipts(runs)));
}

TEST(LabelFailureHistory, HoldsAfterThreeCountedFailuresInARowOfOneTargetVersion) {
  const Outcome failed{failure, 2};
  const Outcome old{failure, 2, "1.9"};
  const Outcome untold{failure, 2, {}};
  const struct {
    const char* what;
    std::vector<Outcome> runs;
    bool held;
    std::optional<std::string> target = "2.0";
  } rows[] = {
      {"nothing ran", {}, false},
      {"two", {failed, failed}, false},
      {"three of any counted code", {failed, {failure, -1}, {failure, 137}}, true},
      {"four", {failed, failed, failed, failed}, true},
      {"a success ends the row", {failed, failed, failed, {success, 0}}, false},
      {"a success within", {failed, {success, 0}, failed, failed}, false},
      {"neither skipped nor uncounted ones lengthen it", {failed, {failure, 6}, {skipped, 11}, failed}, false},
      {"nor end it", {failed, {skipped, 10}, {failure, 13}, failed, failed}, true},
      {"an older version's does not count", {old, failed, failed}, false},
      {"another version's within", {failed, failed, old, failed}, false},
      {"a new version is tried", {failed, failed, failed}, false, "2.1"},
      {"no newer version is known", {failed, failed, failed}, true, std::nullopt},
      {"of a version nobody told", {untold, untold, untold}, false},
      {"and none is known now either", {untold, untold, untold}, true, std::nullopt},
  };
  for (const auto& row : rows) EXPECT_EQ(held(row.runs, row.target), row.held) << row.what;
}

TEST(LabelFailureHistory, HoldsAtOnceWhereAnotherTryCannotHelp) {
  for (const std::int64_t code : {5, 15, 95, 98}) {
    EXPECT_TRUE(held({{failure, code}})) << code;
    EXPECT_TRUE(held({{failure, code}, {failure, 2}}, std::nullopt)) << code;
    EXPECT_FALSE(held({{failure, code}}, "2.1")) << "a new version is tried";
    EXPECT_FALSE(held({{failure, code}}, "2.0", kStart + 1s)) << "a new cycle is tried";
    EXPECT_FALSE(held({{failure, code}, {success, 0}})) << code;
    EXPECT_TRUE(held({{failure, 2}, {failure, 2}, {failure, code}}, "2.0", kStart + 2h)) << code;
  }
}

TEST(LabelFailureHistory, StartsAnewWithTheCycle) {
  const std::vector<Outcome> four{{failure, 2}, {failure, 2}, {failure, 2}, {failure, 2}};
  EXPECT_TRUE(held(four, "2.0", kStart + 1h)) << "the last three lie in the cycle";
  EXPECT_FALSE(held(four, "2.0", kStart + 1h + 1s));
  EXPECT_TRUE(held(four, "2.0", std::nullopt));
  EXPECT_FALSE(LabelFailureHistory::isHeld(Label("other"), "2.0", std::nullopt,
                                           LabelFailureHistory::failureRecords(receipts(four))));
}

TEST(LabelFailureHistory, RecordsTheRowForTheRowsText) {
  const auto records = LabelFailureHistory::failureRecords(
      receipts({{failure, 2, "1.9"}, {failure, 2}, {failure, 2}, {failure, 2}, {failure, 2}}));
  const LabelFailureHistory::Record expected{
      .count = 4, .targetVersion = "2.0", .lastFailureAt = kStart + 4h, .holdingFailureAt = kStart + 2h};
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records.at(kQuill), expected);
}

TEST(LabelInstallHistory, ReinstallsARequiredApplicationOnceACycle) {
  AppInfo app{.label = kQuill, .currentVersion = "2.0"};
  CorvaneConfiguration config;
  config.installomatorOptions = "NOTIFY=silent INSTALL=force";
  const auto pending = [&](const std::vector<Outcome>& runs, std::optional<Date> cycleStart) {
    return LabelInstallHistory::isForcedReinstallPending(
        app, config, LabelInstallHistory::installHistory(receipts(runs)), cycleStart);
  };
  EXPECT_TRUE(pending({}, kStart));
  EXPECT_TRUE(pending({{failure, 2}, {skipped, 10}}, kStart));
  EXPECT_FALSE(pending({{success, 0}, {failure, 2}}, kStart));
  EXPECT_TRUE(pending({{success, 0}}, kStart + 1s)) << "installed in an earlier cycle";
  EXPECT_FALSE(pending({{success, 0}, {success, 0}}, kStart + 1s)) << "the latest install counts";
  EXPECT_FALSE(pending({}, std::nullopt));

  for (const auto* others : {"NOTIFY=silent", "INSTALL=Force", "INSTALL=yes", "INSTALL=force INSTALL="}) {
    config.installomatorOptions = others;
    EXPECT_FALSE(pending({}, kStart)) << others;
  }
  config.installomatorOptions = "INSTALL=force";
  app.currentVersion.reset();
  EXPECT_FALSE(pending({}, kStart)) << "a missing one is no reinstall";
}

}  // namespace
}  // namespace corvane
