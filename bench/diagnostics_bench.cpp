// A diagnostic bundle of a machine that logs much, and zip alone over the same files.
#include <stdlib.h>

#include <fstream>
#include <random>

#include "core/preferences/preference_manager.h"
#include "diagnostics/diagnostic_bundle_service.h"
#include "figure.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/system_accounts.h"
#include "platform/posix/system_clock.h"
#include "platform/posix/system_entropy.h"
#include "platform/scripted/scripted_helper_registration.h"
#include "platform/scripted/scripted_locale.h"
#include "platform/scripted/scripted_own_bundle.h"
#include "platform/scripted/scripted_preference_domains.h"
#include "platform/scripted/scripted_surroundings.h"
#include "platform/uv/uv_child_processes.h"
#include "platform/uv/uv_main_loop.h"
#include "platform/uv/uv_work_queue.h"

namespace corvane::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kFiles = 10;
constexpr std::size_t kFileSize = 10'000'000;  // bytes; 100 MB in all
constexpr int kRuns = 5;
constexpr double kGoal = 1.2;

class NoLog final : public LogSink {
  void write(LogLevel, std::string_view) override {}
};

// Lines as the helper writes them, with numbers that repeat no more than real ones do.
void putLogs(const fs::path& folder) {
  fs::create_directories(folder);
  std::mt19937 random(7);
  for (int file = 0; file < kFiles; ++file) {
    std::string text;
    while (text.size() < kFileSize)
      text +=
          fmt::format("2026-11-{:02}T{:02}:{:02}:{:02}.{:03}+01:00 [INFO] PatchRun: label{} {} of {} in {} ms, {:x}\n",
                      random() % 30 + 1, random() % 24, random() % 60, random() % 60, random() % 1000, random() % 300,
                      random() % 40, random() % 40, random() % 100'000, random());
    std::ofstream(folder / fmt::format("crv-{}.log", file), std::ios::binary) << text;
  }
}

class Machine {
 public:
  explicit Machine(const fs::path& folder) : places_{.root = folder / "root", .home = folder / "home"} {
    fs::create_directories(places_.home);
    putLogs(places_.logFolder());
  }

  [[nodiscard]] fs::path logs() const { return places_.logFolder(); }

  bool bundle(const fs::path& output) {
    std::optional<Result<fs::path>> answer;
    service_.generateBundle(output, [&](Result<fs::path> result) { answer = std::move(result); });
    loop_.pump([&] { return answer.has_value(); }, 120s);
    return answer && *answer;
  }

  bool zip(const fs::path& output) {
    std::optional<Result<ChildExit>> answer;
    children_.start({.executable = "/usr/bin/zip",
                     .arguments = {"-r", "-q", output.string(), logs().filename().string()},
                     .environment = {},
                     .folder = logs().parent_path().string()},
                    nullptr, [&](Result<ChildExit> exit) { answer = std::move(exit); });
    loop_.pump([&] { return answer.has_value(); }, 120s);
    return answer && *answer && (*answer)->code == 0;
  }

 private:
  CorvaneConstants places_;
  SystemClock clock_;
  UvMainLoop loop_{clock_};
  UvWorkQueue work_;
  UvChildProcesses children_{loop_.loop(), loop_.mainQueue()};
  NoLog log_;
  PosixFiles files_;
  SystemEntropy entropy_;
  ScriptedLocale locale_;
  SystemAccounts accounts_{"ada", places_.home};
  ScriptedConsoleSessions console_;
  ScriptedOwnBundle bundle_;
  NotificationCenter notifications_{loop_.mainQueue()};
  ScriptedPreferenceDomains domains_{loop_.mainQueue()};
  PreferenceManager preferences_{domains_, notifications_, log_};
  ScriptedHelperRegistration registration_{loop_.mainQueue()};
  HelperInstallationService installation_{
      {registration_, files_, bundle_, preferences_, clock_, loop_.mainQueue(), entropy_}, places_.helperHeartbeat()};
  HelperBackgroundPatchStateStore helperState_{places_.helperState(), files_, log_};
  ReceiptManager receipts_{places_.receipts(), files_, log_};
  LoggingService logging_{
      {.system = places_.logFile(), .archive = places_.logArchiveFolder(), .fallback = std::nullopt},
      LogRole::user,
      files_,
      clock_,
      [] { return Calendar::utc(); }};
  DiagnosticBundleService service_{{.main = loop_.mainQueue(),
                                    .work = work_,
                                    .clock = clock_,
                                    .locale = locale_,
                                    .entropy = entropy_,
                                    .children = children_,
                                    .accounts = accounts_,
                                    .console = console_,
                                    .bundle = bundle_,
                                    .installation = installation_,
                                    .helperState = helperState_,
                                    .receipts = receipts_,
                                    .log = logging_,
                                    .places = places_,
                                    .operatingSystem = {},
                                    .temporaryFolder = fs::temp_directory_path()}};
};

int run() {
  auto pattern = (fs::temp_directory_path() / "corvane-bench-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) return 1;
  const fs::path folder = pattern;
  bool whole = true;
  {
    Machine machine(folder);
    const auto alone = folder / "alone.zip";
    const auto [ours, other] = medianMicrosecondsInTurns(
        kRuns, [&] { whole &= machine.bundle(folder / "bundle.zip"); },
        [&] {
          fs::remove(alone);
          whole &= machine.zip(alone);
        });
    whole = whole && fs::file_size(folder / "bundle.zip") >= fs::file_size(alone);
    if (whole)
      ratioFigure("diagnostic bundle of 100 MB of logs", "ms", ours / 1000, {"zip alone", other / 1000}, kGoal);
  }
  fs::remove_all(folder);
  return whole ? 0 : 1;
}

}  // namespace
}  // namespace corvane::bench

int main() { return corvane::bench::run(); }
