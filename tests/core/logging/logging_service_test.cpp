#include <cerrno>
#include <list>
#include <thread>

#include "core/logging/log_file_catalog.h"
#include "core/logging/log_record_codec.h"
#include "core/logging/logging_service.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/test.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct LoggingServiceTest : testing::Test {
  const std::filesystem::path system = "/logs/crv.log";
  const std::filesystem::path archive = "/archive";
  const std::filesystem::path fallback = "/home/logs/crv.log";
  VirtualMachine machine{*parseIso8601("2026-11-22T21:04:42.123Z")};
  ScriptedFiles files{machine.clock()};

  void SetUp() override { files.put(system.parent_path() / "other", ""); }  // the installation ships the folder

  LoggingService make(LogRole role) {
    LogPaths paths{.system = system, .archive = archive, .fallback = fallback};
    if (role == LogRole::helper) paths.fallback = std::nullopt;
    return {paths, role, files, machine.clock(), [] { return *Calendar::named("Europe/Berlin"); }};
  }
};

TEST_F(LoggingServiceTest, OneLineAMessageWithLocalTimeAndLevel) {
  auto log = make(LogRole::user);
  log.write(LogLevel::info, "StatusViewModel: first\nsecond\r");
  Logger(log, "Corvane").warning("w");
  Logger(log, "Corvane").error("e");
  EXPECT_EQ(files.content(system),
            "2026-11-22T22:04:42.123+01:00 [INFO] StatusViewModel: first\\nsecond\\r\n"
            "2026-11-22T22:04:42.123+01:00 [WARNING] Corvane: w\n"
            "2026-11-22T22:04:42.123+01:00 [ERROR] Corvane: e\n");
  EXPECT_FALSE(log.isUsingUserFallback());
  EXPECT_EQ(log.logFilePath(), system);
}

TEST_F(LoggingServiceTest, ControlBytesAreEscapedAndComeBack) {
  auto log = make(LogRole::user);
  std::string message = "C:\\new \\\\x41 \u00fc ";
  for (int byte = 0; byte < 0x20; ++byte) message += static_cast<char>(byte);
  message += "\x7f 2026-11-22T22:04:42.123+01:00 [INFO] forged";
  log.write(LogLevel::info, message);
  const auto text = files.content(system).value_or("");
  EXPECT_THAT(text, HasSubstr("C:\\\\new \\\\\\\\x41 \u00fc \\x00\\x01"));
  EXPECT_THAT(text, HasSubstr("\\x1b"));
  EXPECT_EQ(std::ranges::count_if(text, [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; }), 1);
  const auto records = LogRecordCodec::parse(text);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].message, message);
  EXPECT_EQ(LogRecordCodec::parse("2026-11-22T21:04:43Z [INFO] a\\q \\x4 \\").front().message, "a\\q \\x4 \\");
}

TEST_F(LoggingServiceTest, OnlyTheHelperMakesTheSystemFolder) {
  const std::filesystem::path missing = "/missing/crv.log";
  const auto log = [&](LogRole role) {
    return LoggingService({.system = missing, .archive = archive, .fallback = fallback}, role, files, machine.clock(),
                          [] { return Calendar::utc(); });
  };
  auto user = log(LogRole::user);
  user.write(LogLevel::info, "mine");
  EXPECT_FALSE(files.exists(missing.parent_path()));
  EXPECT_EQ(user.logFilePath(), fallback);
  log(LogRole::helper).write(LogLevel::info, "the machine's");
  EXPECT_THAT(files.content(missing).value_or(""), HasSubstr("the machine's"));
}

TEST_F(LoggingServiceTest, VerboseLinesNeedEitherSetting) {
  auto log = make(LogRole::user);
  for (const auto& [verbose, debug] : {std::pair{false, false}, {true, false}, {false, true}, {false, false}}) {
    log.refreshVerbosityFromPreferences(verbose, debug);
    log.write(LogLevel::verbose, verbose ? "by verbose" : debug ? "by debug" : "never");
  }
  const auto text = files.content(system).value_or("");
  EXPECT_THAT(text, HasSubstr("[VERBOSE] by verbose"));
  EXPECT_THAT(text, HasSubstr("[VERBOSE] by debug"));
  EXPECT_THAT(text, testing::Not(HasSubstr("never")));
}

TEST_F(LoggingServiceTest, WhoMayNotWriteTheSystemLogFallsBackAndStaysThere) {
  files.put(system, "old\n");
  files.failPath(system, EACCES);
  auto log = make(LogRole::user);
  EXPECT_TRUE(log.isUsingUserFallback());
  log.write(LogLevel::info, "one");
  files.failPath(system, 0);
  log.write(LogLevel::info, "two");
  EXPECT_EQ(log.logFilePath(), fallback);
  EXPECT_EQ(files.content(system), "old\n");
  EXPECT_THAT(files.content(fallback).value_or(""), testing::AllOf(HasSubstr("one\n"), HasSubstr("two\n")));
}

TEST_F(LoggingServiceTest, NothingWritableDropsLinesInSilence) {
  files.failPath(system, EACCES);
  files.failPath(fallback, ENOSPC);
  auto log = make(LogRole::user);
  log.write(LogLevel::error, "lost");
  files.failPath(fallback, 0);
  log.write(LogLevel::error, "kept");
  EXPECT_THAT(files.content(fallback).value_or(""), testing::AllOf(HasSubstr("kept"), testing::Not(HasSubstr("lost"))));
}

TEST_F(LoggingServiceTest, TheHelperRotatesAtTheLimitAndKeepsFive) {
  auto log = make(LogRole::helper);
  for (int round = 1; round <= 7; ++round) {
    files.put(system, std::to_string(round) + std::string(LoggingService::kRotationSize - 1, 'x'));
    log.write(LogLevel::info, "fresh");
  }
  for (int number = 1; number <= 5; ++number) {
    const auto old = files.content(archive / ("crv." + std::to_string(number) + ".log")).value_or("-");
    EXPECT_EQ(old.front(), static_cast<char>('0' + 8 - number)) << number;
  }
  EXPECT_FALSE(files.exists(archive / "crv.6.log"));
  EXPECT_LT(files.size(system), 100);
}

TEST_F(LoggingServiceTest, OneByteBelowTheLimitIsNotRotatedAndAUserRotatesOnlyTheFallback) {
  auto helper = make(LogRole::helper);
  files.put(system, std::string(LoggingService::kRotationSize - 1, 'x'));
  helper.write(LogLevel::info, "a");
  EXPECT_FALSE(files.exists(archive / "crv.1.log"));

  auto user = make(LogRole::user);
  user.write(LogLevel::info, "b");
  EXPECT_FALSE(files.exists(archive / "crv.1.log"));

  files.failPath(system, EROFS);
  files.put(fallback, std::string(LoggingService::kRotationSize, 'y'));
  user.write(LogLevel::info, "c");
  EXPECT_EQ(files.size(fallback.parent_path() / "crv.1.log"), LoggingService::kRotationSize);
  EXPECT_THAT(files.content(fallback).value_or(""), HasSubstr("c\n"));
}

TEST_F(LoggingServiceTest, ThreadsDoNotMixLines) {
  auto log = make(LogRole::user);
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
      threads.emplace_back([&log, i] {
        for (int n = 0; n < 50; ++n) log.write(LogLevel::info, std::string(20, static_cast<char>('a' + i)));
      });
  }
  const auto records = LogRecordCodec::parse(files.content(system).value_or(""));
  ASSERT_EQ(records.size(), 200U);
  for (const auto& record : records) EXPECT_EQ(record.message, std::string(20, record.message.front()));
}

TEST(LogRecordCodec, ReadsAllLevelsAndTakesOtherLinesAsContinuation) {
  const auto records = LogRecordCodec::parse(
      "torn start of a rotated line\n"
      "2026-11-22T22:04:42.123+01:00 [INFO] Corvane: [x] a\n"
      "  second line\n"
      "2026-11-22T21:04:43Z [WARN] b\r\n"
      "not a date [INFO] c\n"
      "2026-11-22T21:04:44Z [LOUD] d\n"
      "2026-11-22T21:04:45Z [NOTICE] e");
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[0].timestamp, *parseIso8601("2026-11-22T21:04:42.123Z"));
  EXPECT_EQ(records[0].message, "Corvane: [x] a\n  second line");
  EXPECT_EQ(records[1].level, "WARN");
  EXPECT_EQ(records[1].message, "b\nnot a date [INFO] c\n2026-11-22T21:04:44Z [LOUD] d");
  EXPECT_EQ(records[2].level, "NOTICE");
  EXPECT_TRUE(LogRecordCodec::parse("").empty());
}

// Heads of one minute are read by what the one before them had; these are where that could go wrong.
TEST(LogRecordCodec, NeighboursAreReadAsTheyWouldBeAlone) {
  const std::vector<std::string> lines{
      "2026-11-22T22:04:42.123+01:00 [INFO] one",      "2026-11-22T22:04:59.999+01:00 [ERROR] two",
      "2026-11-22T22:04:60.000+01:00 [INFO] leap",     "2026-11-22T22:04:61.000+01:00 [INFO] none",
      "2026-11-22T22:04:42.123-01:00 [INFO] west",     "2026-11-22T22:04:42.123456+01:00 [WARN] finer",
      "2026-11-22T22:04:42.12x+01:00 [INFO] none",     "2026-11-22T22:04:42.123+01:00 [INFO",
      "2026-11-22T22:04:42.123+01:00 (INFO] none",     "2026-11-22T22:04:42,123+01:00 [INFO] none",
      "2026-11-22T22:04:42.123+01:00 [INFORM] none",   "2026-11-22T22:05:42.123+01:00 [DEBUG]close",
      "2026-11-22T22:05:42.123+01:00 [VERBOSE] a\\nb", "2026-11-22T22:05:42.123+01:00 [NOTICE] ",
      "2026-11-22T22:05:42.123+01:00 [INFO]",          "2026-02-30T22:05:42.123+01:00 [INFO] none",
      "2026-11-22T22:05:42.123+01:00 [INFO] \xff\\x",  "2026-11-22T21:05:42Z [INFO] last"};
  std::string text;
  std::vector<ParsedLogRecord> expected;
  std::list<LogRecords> alone;
  std::list<std::string> messages;
  for (const auto& line : lines) {
    text += line + "\n";
    alone.push_back(LogRecordCodec::parse(line));
    if (!alone.back().empty())
      expected.push_back(alone.back().front());
    else
      expected.back().message = messages.emplace_back(std::string(expected.back().message) + "\n" + line);
  }
  EXPECT_EQ(expected.size(), 11U);
  EXPECT_THAT(LogRecordCodec::parse(text), testing::ElementsAreArray(expected));
}

TEST(LogRecordCodec, AContinuationStandsBehindAMessageThatGotShorter) {
  const auto records = LogRecordCodec::parse(
      "2026-11-22T21:04:43Z [INFO] a\\tb\\x1b\r\n"
      "\r\n"
      "at c\\n\n"
      "2026-11-22T21:04:44Z [INFO] next\\\\");
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0].message, "a\tb\x1b\n\nat c\\n");
  EXPECT_EQ(records[1].message, "next\\");
}

TEST(LogFileCatalog, PathsOnceAndRecordsInTimeOrder) {
  EXPECT_THAT(LogFileCatalog::uniqueViewerPaths("/u/crv.log", "/s/crv.log", "/u/./crv.log"),
              ElementsAre("/s/crv.log", "/u/crv.log"));
  EXPECT_THAT(LogFileCatalog::uniqueViewerPaths("/x.log", "/s.log", "/u.log"),
              ElementsAre("/s.log", "/u.log", "/x.log"));
  const auto second = [](int n) { return Date(std::chrono::seconds(n)); };
  const auto merged = LogFileCatalog::merge({{"a", {{second(1), "INFO", "a1"}, {second(3), "INFO", "a3"}}},
                                             {"b", {{second(1), "INFO", "b1"}, {second(2), "INFO", "b2"}}}});
  std::vector<std::string> messages;
  for (const auto& record : merged) messages.emplace_back(record.message);
  EXPECT_THAT(messages, ElementsAre("a1", "b1", "b2", "a3"));
}

TEST(LogFileCatalog, OneRecordReadTwiceStandsOnceAndAClockSetBackKeepsTheOrderOfTime) {
  const auto second = [](int n) { return Date(std::chrono::seconds(n)); };
  const auto merged = LogFileCatalog::merge(
      {{"a", {{second(2), "INFO", "same"}, {second(2), "WARN", "same"}, {second(2), "INFO", "other"}}},
       {"b", {{second(3), "INFO", "same"}, {second(1), "INFO", "set back"}, {second(2), "INFO", "same"}}}});
  EXPECT_THAT(merged,
              ElementsAre(ParsedLogRecord{second(1), "INFO", "set back"}, ParsedLogRecord{second(2), "INFO", "same"},
                          ParsedLogRecord{second(2), "WARN", "same"}, ParsedLogRecord{second(2), "INFO", "other"},
                          ParsedLogRecord{second(3), "INFO", "same"}));
}

}  // namespace
}  // namespace corvane
