// Reading the history and loading the settings, as the application does at every decision.
#include <simdjson.h>
#include <unistd.h>

#include <filesystem>

#include "core/history/receipt_manager.h"
#include "core/preferences/preference_manager.h"
#include "figure.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/posix_preference_domains.h"
#include "platform/scripted/virtual_time.h"

namespace corvane::bench {
namespace {

constexpr int kReceipts = 100'000;
constexpr double kMostMicrosecondsForSettings = 20;

class NoLog final : public LogSink {
  void write(LogLevel, std::string_view) override {}
};

std::string manyReceipts() {
  std::string text;
  const auto start = *parseIso8601("2020-01-01T00:00:00Z");
  for (int i = 0; i < kReceipts; ++i)
    text += writeJson(toJson(PatchingReceipt{.label = Label("label" + std::to_string(i % 300)),
                                             .timestamp = start + std::chrono::minutes(i * 20),
                                             .status = i % 9 == 0 ? PatchingStatus::failure : PatchingStatus::success,
                                             .version = "12." + std::to_string(i % 40) + ".1",
                                             .targetVersion = "12." + std::to_string(i % 40) + ".1",
                                             .installomatorExitCode = i % 9 == 0 ? 2 : 0,
                                             .usedStagedInstaller = i % 2 == 0})) +
            "\n";
  return text;
}

// The least a reader could do: every line parsed, three of its fields looked at.
std::size_t bareLoop(const std::filesystem::path& path) {
  auto bytes = simdjson::padded_string::load(path.string()).value();
  simdjson::ondemand::parser parser;
  auto lines = parser.iterate_many(bytes);
  std::size_t sum = 0;
  for (auto line : lines.value()) {
    std::string_view label;
    std::string_view status;
    std::int64_t code = 0;
    if (!line["label"].get(label) && !line["status"].get(status) && !line["installomatorExitCode"].get(code))
      sum += label.size() + status.size() + static_cast<std::size_t>(code);
  }
  return sum;
}

void receiptsFigure(const std::filesystem::path& folder, PosixFiles& files, LogSink& log) {
  const ReceiptManager receipts(folder / "receipts.jsonl", files, log);
  if (!files.replace(receipts.file(), manyReceipts(), 0644)) return;
  std::size_t seen = 0;
  const double ours = medianMicroseconds(9, [&] { seen += receipts.readAllReceipts().size(); });
  const double bare = medianMicroseconds(9, [&] { seen += bareLoop(receipts.file()); });
  if (seen == 0) return;
  ratioFigure("100,000 receipts read", "ms", ours / 1000, {"bare simdjson loop over the file", bare / 1000}, 2);
}

void settingsFigure(const std::filesystem::path& folder, LogSink& log) {
  VirtualMachine machine;
  NotificationCenter notifications(machine.main());
  PosixPreferenceDomains domains({.user = folder / "user.plist", .managed = folder / "managed.plist"},
                                 [](std::string_view) {});
  PreferenceManager preferences(domains, notifications, log);
  preferences.writePreference("IgnoredLabels", std::vector<std::string>{"zoom*", "firefox"});
  constexpr int kRounds = 1000;
  std::int64_t seen = 0;
  const double all = medianMicroseconds(9, [&] {
    for (int i = 0; i < kRounds; ++i) seen += preferences.loadConfiguration().daysUntilReset;
  });
  if (seen > 0) limitFigure("fresh configuration, files unchanged", "µs", all / kRounds, kMostMicrosecondsForSettings);
}

int run() {
  auto pattern = (std::filesystem::temp_directory_path() / "corvane-bench-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) return 1;
  PosixFiles files;
  NoLog log;
  receiptsFigure(pattern, files, log);
  settingsFigure(pattern, log);
  std::filesystem::remove_all(pattern);
  return 0;
}

}  // namespace
}  // namespace corvane::bench

int main() { return corvane::bench::run(); }
