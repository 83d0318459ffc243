#include <unistd.h>

#include <cerrno>

#include "core/history/deferral_event_manager.h"
#include "core/history/helper_state_stores.h"
#include "core/history/label_history_caches.h"
#include "core/history/receipt_manager.h"
#include "platform/posix/posix_files.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

struct HistoryTest : ::testing::Test {
  VirtualMachine machine;
  ScriptedFiles files{machine.clock()};
  RecordingLog log;
  const std::filesystem::path receiptsFile = "/support/receipts.jsonl";
  ReceiptManager receipts{receiptsFile, files, log};

  PatchingReceipt receipt(const char* label, Duration age, PatchingStatus status = PatchingStatus::success) {
    return {.label = Label(label), .timestamp = machine.now() - age, .status = status, .targetVersion = "2.0"};
  }
};

TEST_F(HistoryTest, ReceiptsComeBackNewestFirst) {
  EXPECT_TRUE(receipts.readAllReceipts().empty());
  const std::vector written{receipt("a", 3h), receipt("b", 1h), receipt("a", 2h, PatchingStatus::failure)};
  for (const auto& one : written) ASSERT_TRUE(receipts.append(one));
  EXPECT_THAT(receipts.readAllReceipts(), ElementsAre(written[1], written[2], written[0]));
  EXPECT_THAT(receipts.readReceipts(Label("a")), ElementsAre(written[2], written[0]));
  EXPECT_TRUE(receipts.readReceipts(Label("c")).empty());
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(HistoryTest, DamagedLinesCostThemselvesOnlyAndAreToldOnce) {
  const auto good = writeJson(toJson(receipt("a", 1h)));
  const std::vector<std::string> damaged = {
      R"({"label":"x","timest)",
      "garbage",
      "[]",
      R"({"label":"x"})",
      good + good,
      R"({"label":7,"timestamp":"2026-11-22T21:04:42Z","status":"success","installomatorExitCode":0})",
      R"({"label":"x","timestamp":"22.11.2026","status":"success","installomatorExitCode":0})",
      R"({"label":"x","timestamp":"2026-11-22T21:04:42Z","status":"great","installomatorExitCode":0})",
      R"({"label":"x","timestamp":"2026-11-22T21:04:42Z","status":"success","installomatorExitCode":"0"})",
      "{\"label\":\"\xff\xfe\"}"};
  std::string text;
  for (const auto& line : damaged) text += line + "\n" + good + "\n\n";
  files.put(receiptsFile, text);
  EXPECT_EQ(receipts.readAllReceipts().size(), damaged.size());
  EXPECT_EQ(receipts.readAllReceipts().size(), damaged.size());
  EXPECT_EQ(receipts.readReceipts(Label("a")).size(), damaged.size());
  EXPECT_EQ(log.count("ReceiptManager: Left out 10 damaged line(s) of /support/receipts.jsonl, the first of them line "
                      "1: "),
            1U);
  EXPECT_EQ(log.lines().size(), 1U);
  files.put(receiptsFile, "\n" + text + "torn");
  EXPECT_EQ(receipts.readAllReceipts().size(), damaged.size());
  EXPECT_EQ(log.count("Left out 11 damaged line(s) of /support/receipts.jsonl, the first of them line 2: "), 1U);
  EXPECT_EQ(log.lines().size(), 2U);
}

// The form that the helper writes is read on a shorter way than all others; both must say the same.
TEST_F(HistoryTest, EveryFormOfAReceiptReadsAsTheCodecReadsIt) {
  const std::string head = R"({"label":"quill","timestamp":")";
  const std::string tail = R"(","status":"skipped","installomatorExitCode":)";
  std::vector<std::string> lines;
  for (const auto* date :
       {"2024-02-29T23:59:59Z", "2023-02-29T00:00:00Z", "2026-11-22T21:04:42.123Z", "2026-11-22T22:04:42+01:00",
        "1969-12-31T23:59:59Z", "2026-13-01T00:00:00Z", "2026-00-01T00:00:00Z", "2026-11-31T00:00:00Z",
        "2026-11-22T24:00:00Z", "2026-11-22T23:60:00Z", "2026-11-22T23:59:60Z", "2026-11-22 23:59:59Z",
        "20x6-11-22T23:59:59Z", ""})
    lines.push_back(head + date + tail + "0}");
  const std::vector<std::string> numbers = {"-1}", "00}", "-}", "}", "1.0}", "7", "7}}", "7} "};
  const std::vector<std::string> limits = {"9223372036854775807}", "-9223372036854775808}", "9223372036854775808}"};
  const std::vector<std::string> staged = {R"(7,"usedStagedInstaller":true})", R"(7,"usedStagedInstaller":false})",
                                           R"(7,"usedStagedInstaller":null})", R"(7,"usedStagedInstaller":"no"})"};
  const std::vector<std::string> texts = {R"(7,"version":"2.0"})",       R"(7,"targetVersion":"\u00fc\n"})",
                                          "7,\"version\":\"\t\"}",       "7,\"version\":\"\xff\"}",
                                          "7,\"version\":\"\xc3\xbc\"}", R"(7,"version":"a)"};
  for (const auto& rests : {numbers, limits, staged, texts})
    for (const auto& rest : rests) lines.push_back(head + "2026-11-22T21:04:42Z" + tail + rest);
  lines.push_back(
      R"({"label":"quill","timestamp":"2026-11-22T21:04:42Z","status":"failure","version":"1","targetVersion":"2","installomatorExitCode":2,"usedStagedInstaller":true})");
  lines.push_back(
      "{ \"installomatorExitCode\" : -1, \"future\":{\"a\":[1,{}]}, \"usedStagedInstaller\":null, \"version\":null, "
      "\"status\":\"failure\", \"timestamp\":\"2026-11-22T22:04:42+01:00\", \"label\":\"q\\u0075ill\" }\r");
  for (const auto& line : lines) {
    files.put(receiptsFile, line + "\n");
    const auto json = parseJson(line);
    const auto expected = json ? receiptFromJson(*json) : std::unexpected(json.error());
    const auto all = receipts.readAllReceipts();
    ASSERT_EQ(all.size(), expected ? 1U : 0U) << line;
    if (expected) {
      EXPECT_EQ(all.front(), *expected) << line;
    }
    EXPECT_EQ(receipts.readReceipts(Label("quill")), all) << line;
    EXPECT_TRUE(receipts.readReceipts(Label("quil")).empty()) << line;
  }
}

TEST_F(HistoryTest, ATornLastLineIsClosedBeforeTheNextReceipt) {
  files.put(receiptsFile, R"({"label":"torn","times)");
  ASSERT_TRUE(receipts.append(receipt("a", 1h)));
  ASSERT_TRUE(receipts.append(receipt("b", 0h)));
  EXPECT_EQ(receipts.readAllReceipts().size(), 2U);
  EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(HistoryTest, AFullDiskFailsTheAppendAndLosesNothingBefore) {
  ASSERT_TRUE(receipts.append(receipt("a", 1h)));
  files.failPath(receiptsFile, ENOSPC);
  const auto failed = receipts.append(receipt("b", 1h));
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, ENOSPC);
  files.failPath(receiptsFile, 0);
  ASSERT_TRUE(receipts.append(receipt("c", 1h)));
  EXPECT_EQ(receipts.readAllReceipts().size(), 2U);
}

TEST_F(HistoryTest, AFileTooLargeIsCutDownToItsNewestLinesBeforeTheNext) {
  const auto line = [this](const char* label) { return writeJson(toJson(receipt(label, 1h))) + "\n"; };
  const auto lines = [&](const char* label, std::size_t count) {
    std::string text;
    for (const auto one = line(label); count > 0; --count) text += one;
    return text;
  };
  const auto kept = lines("kept", kKeptLines);
  files.put(receiptsFile, std::string(kLineFileLimit - kept.size() - 1, 'x') + "\n" + kept);
  ASSERT_TRUE(receipts.append(receipt("kept", 1h)));
  EXPECT_EQ(files.size(receiptsFile), kLineFileLimit + line("kept").size()) << "at the limit nothing is cut";

  ASSERT_TRUE(receipts.append(receipt("kept", 1h)));
  EXPECT_EQ(files.content(receiptsFile), kept + line("kept"));
  EXPECT_EQ(receipts.readReceipts(Label("kept")).size(), kKeptLines + 1);

  const auto half = std::string(kLineFileLimit / 2, 'x') + "\n";
  files.put(receiptsFile, half + half + line("kept") + R"({"torn)");
  ReceiptManager restarted(receiptsFile, files, log);
  ASSERT_TRUE(restarted.append(receipt("kept", 1h)));
  EXPECT_EQ(files.content(receiptsFile), line("kept") + "{\"torn\n" + line("kept"));

  files.put(receiptsFile, half + half + line("kept"));
  const auto before = files.content(receiptsFile).value();
  files.failCall(2, ENOSPC);  // behind the look at what is to be kept
  ASSERT_TRUE(receipts.append(receipt("kept", 1h))) << "a line is worth more than the size";
  EXPECT_EQ(files.content(receiptsFile), before + line("kept"));
}

TEST_F(HistoryTest, OfAFileBeyondAllBoundsTheNewestLinesAreRead) {
  const auto line = writeJson(toJson(receipt("quill", 1h))) + "\n";
  files.put(receiptsFile, "damaged\n" + std::string(kReadLinesLimit, 'x') + "\n" + line);
  EXPECT_EQ(receipts.readAllReceipts().size(), 1U);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(HistoryTest, EventsAreKeptByUserAndReadByLabel) {
  DeferralEventManager mine("/events", "ada", files, log);
  DeferralEventManager theirs("/events", "../bob", files, log);
  const DeferralEventRecord event{.label = Label("quill"), .appName = "Quill", .timestamp = machine.now()};
  auto later = event;
  later.timestamp += 1s;
  auto other = event;
  other.label = Label("ember");
  for (const auto& one : {event, later, other}) ASSERT_TRUE(mine.writeEvent(one));
  ASSERT_TRUE(theirs.writeEvent(event));
  EXPECT_THAT(mine.readEvents(Label("quill")), ElementsAre(later, event));
  EXPECT_TRUE(files.exists("/events/ada.jsonl"));
  EXPECT_EQ(theirs.file(), "/events/_._bob.jsonl");

  files.put("/events/ada.jsonl", "torn\n" + writeJson(toJson(event)) + "\n");
  EXPECT_THAT(mine.readEvents(Label("quill")), ElementsAre(event));
  (void)mine.readEvents(Label("quill"));
  EXPECT_EQ(log.count("Left out 1 damaged line(s) of /events/ada.jsonl, the first of them line 1: "), 1U);
  files.failPath("/events/ada.jsonl", EACCES);
  EXPECT_FALSE(mine.writeEvent(event));
}

TEST_F(HistoryTest, APlantedEventsFileIsNeitherReadNorWritten) {
  const testing::TemporaryFolder folder;
  PosixFiles disk;
  DeferralEventManager events(folder.path(), "ada", disk, log);
  const DeferralEventRecord event{.label = Label("quill"), .appName = "Quill", .timestamp = machine.now()};
  const auto line = writeJson(toJson(event)) + "\n";
  const auto victim = folder.write("elsewhere", line);

  std::filesystem::create_symlink(victim, events.file());
  EXPECT_FALSE(events.writeEvent(event));
  EXPECT_TRUE(events.readEvents(event.label).empty());
  EXPECT_FALSE(disk.append(events.file(), line, 0600)) << "appending never follows a link";
  std::filesystem::remove(events.file());
  std::filesystem::create_hard_link(victim, events.file());
  EXPECT_FALSE(events.writeEvent(event));
  EXPECT_TRUE(events.readEvents(event.label).empty());
  EXPECT_EQ(testing::TemporaryFolder::read(victim), line);
  EXPECT_EQ(log.count("Could not read " + events.file().string() + ": it is a link or another user's file"), 1U);

  std::filesystem::remove(events.file());
  ASSERT_TRUE(events.writeEvent(event));
  EXPECT_THAT(events.readEvents(event.label), ElementsAre(event));
  if (::geteuid() != 0) return;
  ASSERT_EQ(::chown(events.file().c_str(), 1, 1), 0);
  EXPECT_FALSE(events.writeEvent(event));
  EXPECT_TRUE(events.readEvents(event.label).empty());
}

TEST_F(HistoryTest, HelperStateIsAbsentWhenDamagedAndToldOnceAState) {
  HelperBackgroundPatchStateStore store("/support/helper-state.json", files, log);
  EXPECT_EQ(store.read(), std::nullopt);
  EXPECT_TRUE(log.lines().empty());
  const HelperPatchState state{.currentRun = HelperBackgroundCurrentRun{.runID = "r", .startedAt = machine.now()}};
  ASSERT_TRUE(store.write(state));
  EXPECT_EQ(store.read(), state);

  for (const auto* damage : {"{\"currentRun\":", "{\"currentRun\":7}"}) {
    machine.advance(1min);
    files.put("/support/helper-state.json", damage);
    EXPECT_EQ(store.read(), std::nullopt);
    EXPECT_EQ(store.read(), std::nullopt);
  }
  EXPECT_EQ(log.count("/support/helper-state.json counts as absent"), 2U);

  HelperScheduledDiscoveryAppsStore inventory("/support/helper-discovered-apps.json", files, log);
  const Apps apps{AppInfo{.label = Label("quill")}};
  ASSERT_TRUE(inventory.write(apps));
  EXPECT_EQ(inventory.read(), apps);
}

TEST_F(HistoryTest, CachesReadTheReceiptsOnlyWhenTheyChanged) {
  ReceiptsSnapshot snapshot(receipts, files);
  const LabelFailureHistoryCache failures(snapshot);
  const LabelInstallHistoryCache installs(snapshot);
  const LatestReceiptsCache latest(snapshot);
  EXPECT_TRUE(failures.records().empty());
  ASSERT_TRUE(receipts.append(receipt("a", 1h)));
  EXPECT_EQ(installs.history().at(Label("a")), machine.now() - 1h);
  const auto calls = files.calls();
  (void)failures.records();
  (void)installs.history();
  const auto before = latest.receipts();
  EXPECT_EQ(files.calls(), calls);
  machine.advance(1min);
  auto failed = receipt("b", 0h, PatchingStatus::failure);
  failed.installomatorExitCode = 2;
  ASSERT_TRUE(receipts.append(failed));
  EXPECT_EQ(failures.records().at(Label("b")).count, 1);
  EXPECT_EQ(latest.receipts()->at(Label("b")), failed);
  EXPECT_FALSE(before->contains(Label("b")));
}

}  // namespace
}  // namespace corvane
