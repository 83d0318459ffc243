#include "diagnostics/log_view_model.h"

#include "platform/scripted/scripted_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/test.h"

namespace corvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Level = LogViewModel::LogLevel;

std::string line(int second, std::string_view level, std::string_view message) {
  return "2026-11-01T12:00:0" + std::to_string(second) + ".000Z [" + std::string(level) + "] " + std::string(message) +
         "\n";
}

struct LogViewModelTest : testing::Test {
  VirtualMachine machine;
  ScriptedFiles files{machine.clock()};
  RecordingLog log;
  std::filesystem::path written = "/s/crv.log";
  LogViewModel model{{.main = machine.main(),
                      .work = machine.work(),
                      .files = files,
                      .log = log,
                      .systemLog = "/s/crv.log",
                      .fallbackLog = "/u/crv.log",
                      .currentWritePath = [this] { return written; }}};

  void load() {
    model.refresh();
    machine.runUntilIdle();
  }
  [[nodiscard]] std::vector<std::string> shown() const {
    std::vector<std::string> messages;
    for (std::size_t at = 0; at < model.filteredLogs().size(); ++at)
      messages.emplace_back(model.filteredLogs()[at].message);
    return messages;
  }
  [[nodiscard]] std::vector<std::string> shownFor(Level level, const std::string& text) {
    model.setLogLevelFilter(level);
    model.setSearchText(text);
    machine.runUntilIdle();
    EXPECT_FALSE(model.isFiltering());
    return shown();
  }
};

TEST_F(LogViewModelTest, TheStatusTellsWhatWasReadAndClearTouchesNoFile) {
  EXPECT_EQ(model.logPath(), "");
  EXPECT_EQ(model.logPathStatusHelp(), "On-disk log files are never modified by Clear.");
  load();
  EXPECT_EQ(model.logPath(), "Log files (none present): /s/crv.log | /u/crv.log");
  EXPECT_EQ(model.logPathStatusHelp(),
            "Looked for the system log and the per-user fallback. Neither file exists yet. Clear never creates or "
            "truncates these files.");
  EXPECT_FALSE(model.canClear());

  files.put("/u/crv.log", line(2, "INFO", "Corvane: b"));
  written = "/u/crv.log";
  log.clear();
  load();
  EXPECT_THAT(log.messages(), ElementsAre("LogViewModel: Considering log paths: /s/crv.log, /u/crv.log",
                                          "LogViewModel: Could not read log file at: /s/crv.log",
                                          "LogViewModel: Loaded log file at: /u/crv.log"));
  EXPECT_EQ(model.logPath(), "Log file: /u/crv.log");
  EXPECT_EQ(model.logPathStatusHelp(), "On-disk log files are never modified by Clear.");

  files.put("/s/crv.log", line(1, "ERROR", "a") + line(3, "WARN", "c"));
  load();
  EXPECT_EQ(model.logPath(), "Log files: /s/crv.log | /u/crv.log");
  EXPECT_EQ(model.logPathStatusHelp(),
            "Merged 2 on-disk log file(s). Clear only empties the display; files are not modified.");
  EXPECT_THAT(shown(), ElementsAre("a", "Corvane: b", "c"));
  EXPECT_TRUE(model.canClear());

  const auto before = files.content("/s/crv.log");
  model.clear();
  EXPECT_FALSE(model.canClear());
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_EQ(files.content("/s/crv.log"), before);
  load();
  EXPECT_EQ(model.logs().size(), 3U);
}

TEST_F(LogViewModelTest, FiltersByLevelAndTextAsOneTypes) {
  files.put("/s/crv.log", line(1, "INFO", "StatusViewModel: Checking") + line(2, "WARNING", "free text: checking") +
                              line(3, "ERROR", "CHECKED [a-z]* \\\\d+ (50%)") + line(4, "NOTICE", "Übersee Größe") +
                              line(5, "DEBUG", "short"));
  load();
  EXPECT_THAT(shownFor(Level::all, " \t\n"), testing::SizeIs(5));
  EXPECT_THAT(shownFor(Level::info, ""), ElementsAre("StatusViewModel: Checking", "Übersee Größe", "short"));
  EXPECT_THAT(shownFor(Level::warning, ""), ElementsAre("free text: checking"));
  EXPECT_THAT(shownFor(Level::error, "check"), ElementsAre("CHECKED [a-z]* \\d+ (50%)"));
  EXPECT_THAT(shownFor(Level::all, "c"), testing::SizeIs(3));
  EXPECT_THAT(shownFor(Level::all, "cHeCkiN "), testing::SizeIs(2));
  EXPECT_THAT(shownFor(Level::all, "checkin of"), IsEmpty());
  EXPECT_THAT(shownFor(Level::all, "check"), testing::SizeIs(3));  // wider again
  EXPECT_THAT(shownFor(Level::all, "STATUSview"), testing::SizeIs(1));
  EXPECT_THAT(shownFor(Level::all, "ÜBERSEE grÖsse"), IsEmpty());
  EXPECT_THAT(shownFor(Level::all, "üBERSEE GRÖß"), testing::SizeIs(1));
  for (const auto* pattern : {"[a-z]*", "\\d+", "(50%)", ".*"})
    EXPECT_EQ(shownFor(Level::all, pattern).size(), std::string_view(pattern) == ".*" ? 0U : 1U) << pattern;
}

TEST_F(LogViewModelTest, OnlyTheLastOfManyAsksIsAnswered) {
  files.put("/s/crv.log", line(1, "INFO", "old"));
  model.refresh();
  files.put("/s/crv.log", line(2, "INFO", "new"));
  for (int i = 0; i < 5; ++i) model.refresh();
  EXPECT_TRUE(model.isLoading());
  machine.runUntilIdle();
  EXPECT_THAT(shown(), ElementsAre("new"));
  EXPECT_EQ(log.count("Considering"), 2U);

  for (const auto* text : {"n", "ne", "nex", "ne"}) model.setSearchText(text);
  EXPECT_TRUE(model.isFiltering());
  EXPECT_THAT(shown(), ElementsAre("new"));  // until the answer is there
  machine.reorderAnswers(7);
  machine.runUntilIdle();
  EXPECT_THAT(shown(), ElementsAre("new"));

  model.refresh();
  model.clear();
  machine.runUntilIdle();
  EXPECT_THAT(shown(), IsEmpty()) << "what was asked for before the list was emptied does not fill it";
  EXPECT_FALSE(model.isLoading());
}

TEST_F(LogViewModelTest, FilesThatRotateOrVanishAreLeftOutAndComeBack) {
  files.put("/s/crv.log", line(1, "INFO", "a"));
  files.put("/u/crv.log", line(2, "INFO", "b"));
  load();
  const auto first = model.filteredLogs();  // still looked at while the files change
  ASSERT_TRUE(files.remove("/s/crv.log"));
  files.failPath("/u/crv.log", EACCES);
  load();
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_EQ(first[0].message, "a");
  files.failPath("/u/crv.log", 0);
  files.put("/s/crv.log", "half of a li");
  load();
  EXPECT_THAT(shown(), ElementsAre("b"));
  EXPECT_NE(first[0].id, model.filteredLogs()[0].id);
}

TEST_F(LogViewModelTest, NothingComesAfterItsEnd) {
  files.put("/s/crv.log", line(1, "INFO", "a"));
  {
    LogViewModel gone({.main = machine.main(),
                       .work = machine.work(),
                       .files = files,
                       .log = log,
                       .systemLog = "/s/crv.log",
                       .fallbackLog = "/u/crv.log",
                       .currentWritePath = [] { return "/s/crv.log"; }});
    gone.refresh();
  }
  machine.runUntilIdle();
  EXPECT_FALSE(log.holds("Loaded"));
}

TEST(LogEntry, LevelIsByTheExactText) {
  for (const auto& [text, level] : {std::pair{"INFO", Level::info},
                                    {"WARNING", Level::warning},
                                    {"WARN", Level::warning},
                                    {"ERROR", Level::error},
                                    {"Warning", Level::info},
                                    {"DEBUG", Level::info},
                                    {"", Level::info}})
    EXPECT_EQ(logEntryLevel(text), level) << text;
}

TEST(LogEntry, SourceIsOneShortWordBeforeTheFirstColon) {
  const std::string longest(64, 'a');
  std::string umlauts;
  for (int i = 0; i < 64; ++i) umlauts += "ü";
  EXPECT_EQ(logEntrySource("StatusViewModel: a: b"), "StatusViewModel");
  EXPECT_EQ(logEntrySource(longest + ": x"), longest);
  EXPECT_EQ(logEntrySource(umlauts + ": x"), umlauts);
  for (const auto& none : {longest + "a: x", umlauts + "ü: x", std::string("free text: x"), std::string(": x"),
                           std::string("a:b"), std::string("a\tb: x"), std::string()})
    EXPECT_EQ(logEntrySource(none), std::nullopt) << none;
}

// Against the plain way, for texts of every length around the width of what is compared at once.
TEST(LogSearch, FindsWhatThePlainWayFinds) {
  const std::string ground = "ab[0]AbBa.xÜabÿbAb@`{c";
  for (std::size_t length = 0; length < 70; ++length) {
    std::string text;
    while (text.size() < length) text += ground;
    text.resize(length);
    std::string lower = text;
    for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    for (const std::string wanted : {"a", "bb", "[0]", "ba.x", "@", "`", "{", "bab@`{c", "b[", "z", "ab[0]abba.x"})
      EXPECT_EQ(LogSearch(wanted).isIn(text), lower.find(wanted) != std::string::npos) << wanted << " in " << text;
  }
  EXPECT_TRUE(LogSearch("ÿ").isIn("0123456789012345678Ÿ"));
  EXPECT_TRUE(LogSearch("ПРИВЕТ").isIn("0123456789 привет"));
  EXPECT_FALSE(LogSearch("ü").isIn("\xc3"));
  EXPECT_FALSE(LogSearch("ab").isIn("a"));
}

}  // namespace
}  // namespace corvane
