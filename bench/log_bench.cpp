// The log viewer over 200 MB: reading the text apart into records, and a keystroke in its search field.
#include <cstring>

#include "core/logging/log_file_catalog.h"
#include "core/logging/log_record_codec.h"
#include "diagnostics/log_entries.h"
#include "figure.h"

namespace corvane::bench {
namespace {

constexpr std::size_t kBytes = 200U << 20U;
constexpr int kRuns = 7;
constexpr double kMostMillisecondsAKeystroke = 50;

// Lines as the programs write them, of every length between 60 and 260 bytes.
std::string manyLines() {
  constexpr const char* kWords[] = {"Checking for updates", "discoverInstalledApps finished with 214 apps",
                                    "label=atlas version=12.4.1 outcome=upToDate",
                                    "Skipping checkForUpdates — another operation is already running",
                                    "exit code 2 from /Library/Application Support/Corvane/Installomator.sh"};
  constexpr const char* kOwners[] = {"StatusViewModel", "DiscoveryPipeline", "HelperLifecycle", "Corvane"};
  constexpr const char* kLevels[] = {"INFO", "INFO", "INFO", "INFO", "WARNING", "INFO", "INFO", "VERBOSE", "ERROR"};
  std::string text;
  text.reserve(kBytes + 512);
  const auto start = *parseIso8601("2026-01-01T00:00:00Z");
  for (std::size_t i = 0; text.size() < kBytes; ++i) {
    const auto at = start + std::chrono::milliseconds(i * 137 + 1);
    const auto time = iso8601Utc(at);
    text.append(time, 0, 19)
        .append(time.size() > 20 ? time.substr(19, 4) : ".000")
        .append("+00:00 [")
        .append(kLevels[i % std::size(kLevels)])
        .append("] ")
        .append(kOwners[i % std::size(kOwners)])
        .append(": ");
    for (std::size_t words = 0; words <= i % 4; ++words)
      text.append(kWords[(i + words) % std::size(kWords)]).append(" ");
    text.append(std::to_string(i)).append("\n");
  }
  return text;
}

std::size_t countLines(const std::string& text) {
  std::size_t lines = 0;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end; ++lines) {
    const auto* found = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
    at = found == nullptr ? end : found + 1;
  }
  return lines;
}

SharedLogEntries parseFigure(const std::string& text) {
  std::vector<double> ours;
  std::vector<double> counting;
  std::vector<double> whole;
  LogRecords records;
  for (int run = 0; run < kRuns; ++run) {
    std::size_t lines = 0;
    counting.push_back(microsecondsOf([&] { lines = countLines(text); }));
    auto copy = text;
    records = {};
    ours.push_back(microsecondsOf([&] { records = LogRecordCodec::parse(std::move(copy)); }));
    if (records.size() != lines) fmt::print("log: {} records of {} lines\n", records.size(), lines);
    std::vector<LogFileCatalog::File> files;
    files.push_back({"crv.log", std::move(records)});
    whole.push_back(microsecondsOf([&] { records = LogFileCatalog::merge(std::move(files)); }));
  }
  ratioFigure("200 MB of log parsed", "ms", median(ours) / 1000, {"counting its lines", median(counting) / 1000}, 5);
  fmt::print("and put in order | {:.1f} ms | {} records\n", median(whole) / 1000, records.size());
  return std::make_shared<const LogEntries>(1, std::move(records));
}

// Each letter as it is typed: the first looks through all, each next one through what the last one left.
void typed(const SharedLogEntries& entries, const std::string& wanted) {
  const std::atomic<bool> cancelled = false;
  std::vector<std::vector<double>> times(wanted.size());
  std::size_t left = 0;
  for (int run = 0; run < kRuns; ++run) {
    FilteredLogs shown(entries);
    for (std::size_t letters = 1; letters <= wanted.size(); ++letters)
      times[letters - 1].push_back(microsecondsOf([&] {
        const LogFilter filter{.level = LogEntryLevel::all, .search = LogSearch(wanted.substr(0, letters))};
        shown = FilteredLogs(shown, filter, cancelled);
      }));
    left = shown.size();
  }
  double slowest = 0;
  for (auto& one : times) slowest = std::max(slowest, median(one));
  limitFigure(fmt::format("slowest keystroke of \"{}\" ({} left)", wanted, left), "ms", slowest / 1000,
              kMostMillisecondsAKeystroke);
}

void run() {
  const auto text = manyLines();
  const auto entries = parseFigure(text);
  for (const auto* wanted : {"error", "lifecycle", "qqq", "14.9", "über", "exit code 2 from"}) typed(entries, wanted);
}

}  // namespace
}  // namespace corvane::bench

int main() { corvane::bench::run(); }
