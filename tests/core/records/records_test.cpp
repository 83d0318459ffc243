#include "core/records/deferral_records.h"
#include "core/records/helper_records.h"
#include "core/records/history_records.h"
#include "support/test.h"

namespace corvane {
namespace {

using testing::HasSubstr;

Date at(std::string_view text) { return *parseIso8601(text); }

TEST(AppInfo, DisplayNameIsTheBundleWhenInstalledElseTheLabelsName) {
  AppInfo app{.label = Label("quill"), .name = "Quill Editor", .appName = "Quill.app"};
  EXPECT_FALSE(app.isInstalled());
  EXPECT_EQ(app.displayName(), "Quill Editor");
  app.appPath = "/Applications/Quill.app";
  EXPECT_EQ(app.displayName(), "Quill");
  app.appName = std::nullopt;
  app.name = "";
  EXPECT_EQ(app.displayName(), "quill");
}

TEST(AppInfo, APackageWithAVersionIsInstalledWithoutABundle) {
  AppInfo app{.label = Label("cli"), .name = "Cli", .currentBundleVersion = "17"};
  EXPECT_TRUE(app.isInstalled());
  EXPECT_EQ(app.displayCurrentVersion(), "17");
  app.currentVersion = "1.2";
  EXPECT_EQ(app.displayCurrentVersion(), "1.2");
}

AppInfo fullApp() {
  return {.label = Label("quill"),
          .name = "Quill",
          .appName = "Quill – Éditeur.app",
          .packageID = "org.quill",
          .expectedTeamID = "AAAAAAAAAA",
          .bundleTeamID = "BBBBBBBBBB",
          .teamIDMismatch = true,
          .macAppStoreManaged = true,
          .currentVersion = "1.0",
          .currentBundleVersion = "100",
          .newVersion = "1.1",
          .updateCheckFailed = true,
          .updateCheckFailureReason = "no \"answer\"\n",
          .appPath = "/Applications/Quill.app",
          .targetDir = "/Applications"};
}

TEST(AppInfoJson, ComesBackWhole) {
  const Apps apps{fullApp(), AppInfo{.label = Label("bare")}};
  const auto json = parseJson(writeJson(toJson(apps)));
  ASSERT_TRUE(json);
  EXPECT_EQ(appsFromJson(*json), apps);
  EXPECT_FALSE(toJson(apps[1]).find("newVersion"));
}

TEST(AppInfoJson, DamageNamesRecordAndField) {
  const auto broken = parseJson(R"([{"label":"a","name":"A","teamIDMismatch":false,"macAppStoreManaged":false,
      "updateCheckFailed":false,"targetDir":""},{"label":"b","name":7}])");
  const auto apps = appsFromJson(*broken);
  ASSERT_FALSE(apps);
  EXPECT_EQ(apps.error().text, "application 2: AppInfo: field name is no text");
  EXPECT_FALSE(appsFromJson(JsonValue("list")));
  EXPECT_FALSE(appInfoFromJson(toJson(AppInfo{})));
}

TEST(ReceiptJson, ComesBackWholeAndOldOnesLackStaging) {
  const PatchingReceipt receipt{.label = Label("quill"),
                                .timestamp = at("2026-11-22T21:04:42.5Z"),
                                .status = PatchingStatus::failure,
                                .version = "1.0",
                                .targetVersion = "1.1",
                                .installomatorExitCode = -1,
                                .usedStagedInstaller = false};
  EXPECT_EQ(receiptFromJson(toJson(receipt)), receipt);
  const auto old = parseJson(
      R"({"label":"q","timestamp":"2026-11-22T21:04:42Z","status":"SUCCESS","installomatorExitCode":0,"extra":[1]})");
  const auto read = receiptFromJson(*old);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->usedStagedInstaller, std::nullopt);
  EXPECT_EQ(read->status, PatchingStatus::success);
}

TEST(DeferralEventJson, ComesBackWholeAndRefusesOddValues) {
  const DeferralEventRecord event{.id = *Uuid::parse("6F9619FF-8B86-4D01-B42D-00CF4FC964FF"),
                                  .label = Label("quill"),
                                  .appName = "Quill",
                                  .eventType = DeferralEventType::deadlineForced,
                                  .timestamp = at("2026-11-22T21:04:42Z"),
                                  .deferralMinutes = 60,
                                  .escalation = DeferralEscalation::hard};
  EXPECT_EQ(deferralEventFromJson(toJson(event)), event);
  for (const auto& [key, value] : {std::pair{"id", "7"}, {"eventType", "slept"}, {"timestamp", "yesterday"}}) {
    JsonObject object = *toJson(event).object();
    object.set(key, value);
    const auto read = deferralEventFromJson(object);
    ASSERT_FALSE(read) << key;
    EXPECT_THAT(read.error().text, HasSubstr(std::string("field ") + key));
  }
}

TEST(HelperState, ComesBackWholeWithDatesSince2001) {
  const HelperPatchState state{
      .lastBackgroundPatchSummary = BackgroundPatchSummary{.runID = "r1",
                                                           .completedAt = at("2026-11-22T21:04:42Z"),
                                                           .labels = {Label("quill")},
                                                           .totalLabels = 1,
                                                           .failureCount = 1,
                                                           .hasFailures = true},
      .currentRun = HelperBackgroundCurrentRun{.runID = "r2", .startedAt = at("2001-01-01T00:01:00Z")},
      .lastScheduledDiscoverySummary = ScheduledDiscoverySummary{.runID = "r3", .appCount = 30}};
  const auto json = toJson(state);
  EXPECT_EQ(helperPatchStateFromJson(json), state);
  EXPECT_EQ(json.find("currentRun")->find("startedAt")->number(), 60.0);
  EXPECT_EQ(helperPatchStateFromJson(JsonObject{}), HelperPatchState{});
  EXPECT_FALSE(helperPatchStateFromJson(*parseJson(R"({"currentRun":{"runID":"r","startedAt":1e300}})")));
}

TEST(HelperState, APassIsActiveWhileYoungerThanTheLimit) {
  const auto start = at("2026-11-22T21:00:00Z");
  HelperPatchState state;
  EXPECT_FALSE(state.isBackgroundPassActive(start, 1h));
  state.currentRun = HelperBackgroundCurrentRun{.runID = "r", .startedAt = start};
  EXPECT_TRUE(state.isBackgroundPassActive(start + 59min, 1h));
  EXPECT_FALSE(state.isBackgroundPassActive(start + 1h, 1h));
  EXPECT_TRUE(state.isBackgroundPassActive(start - 59min, 1h)) << "clocks drift";
  EXPECT_FALSE(state.isBackgroundPassActive(start - 1h, 1h)) << "the clock was set back";
}

TEST(HardDeadlineTrigger, FollowsBothLimits) {
  const auto now = at("2026-11-22T21:00:00Z");
  const DeferralInfo info{.hardDeferralCount = 3};
  using enum HardDeadlineTrigger;
  EXPECT_EQ(info.hardDeadlineTrigger({}, {}, now), std::nullopt);
  EXPECT_EQ(info.hardDeadlineTrigger(4, now + 1s, now), std::nullopt);
  EXPECT_EQ(info.hardDeadlineTrigger(3, now + 1s, now), count);
  EXPECT_EQ(info.hardDeadlineTrigger({}, now, now), date);
  EXPECT_EQ(info.hardDeadlineTrigger(3, now - 1s, now), countAndDate);
  EXPECT_EQ(DeferralInfo{}.hardDeadlineTrigger(0, {}, now), count);
}

}  // namespace
}  // namespace corvane
