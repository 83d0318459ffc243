// Reading the history and loading the settings, as the application does at every decision.
#include <simdjson.h>
#include <unistd.h>

#include <cstring>
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
constexpr int kFields = 7;
constexpr int kReadings = 21;
// Samples so short that most of them run undisturbed on a busy machine.
constexpr int kRounds = 20;
constexpr int kSamples = 401;
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

// The least a reader could do: the file loaded, every line parsed, every field's value taken as it stands and
// nothing made of it. Line by line, for a reader of whole documents would stop at a torn line. Gives how many
// fields there were.
std::size_t bareLoop(const std::filesystem::path& path) {
  const auto bytes = simdjson::padded_string::load(path.string()).value();
  simdjson::ondemand::parser parser;
  std::size_t seen = 0;
  const char* const end = bytes.data() + bytes.size();
  for (const char* line = bytes.data(); line < end;) {
    const auto* next = static_cast<const char*>(std::memchr(line, '\n', static_cast<std::size_t>(end - line)));
    const auto size = static_cast<std::size_t>((next ? next : end) - line);
    auto document = parser.iterate(simdjson::padded_string_view(line, size, size + simdjson::SIMDJSON_PADDING));
    for (auto field : document.get_object()) {
      std::string_view key;
      std::string_view text;
      if (field.unescaped_key().get(key)) return 0;
      if (field.value().type() == simdjson::ondemand::json_type::string && field.value().get_string().get(text))
        return 0;
      ++seen;
    }
    line = next ? next + 1 : end;
  }
  return seen;
}

void receiptsFigure(const std::filesystem::path& folder, PosixFiles& files, LogSink& log) {
  const ReceiptManager receipts(folder / "receipts.jsonl", files, log);
  if (!files.replace(receipts.file(), manyReceipts(), 0644)) return;
  bool whole = true;
  const auto [ours, bare] = medianMicrosecondsInTurns(
      kReadings, [&] { whole &= receipts.readAllReceipts().size() == kReceipts; },
      [&] { whole &= bareLoop(receipts.file()) == kReceipts * kFields; });
  if (!whole) fmt::print("receipts: a loop did not see all lines\n");
  ratioFigure("100,000 receipts read", "ms", ours / 1000, {"bare simdjson loop over the file", bare / 1000}, 2);
}

void settingsFigure(const std::filesystem::path& folder, LogSink& log) {
  VirtualMachine machine;
  NotificationCenter notifications(machine.main());
  PosixPreferenceDomains domains({.user = folder / "user.plist", .managed = folder / "managed.plist"},
                                 [](std::string_view) {});
  PreferenceManager preferences(domains, notifications, log);
  preferences.writePreference("IgnoredLabels", std::vector<std::string>{"zoom*", "firefox"});
  std::int64_t seen = 0;
  const double all = medianMicroseconds(kSamples, [&] {
    for (int i = 0; i < kRounds; ++i) seen += preferences.loadConfiguration()->daysUntilReset;
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
