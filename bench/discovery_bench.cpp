// The direct scan and the label catalogue, held against reading the same files, one grep and a plain Python scan.
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/discovery/app_discovery_service.h"
#include "figure.h"
#include "sample/big_tree.h"

extern char** environ;

namespace {

using namespace corvane;

constexpr int kBundles = 2000;
constexpr int kLabels = 1000;
constexpr int kRuns = 21;
constexpr int kPythonRuns = 3;  // it takes long enough to be even

class NoLog : public LogSink {
 public:
  void write(LogLevel, std::string_view) override {}
};

void readWhole(const std::filesystem::path& file) {
  static char buffer[64U << 10U];
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return;
  while (::read(descriptor, buffer, sizeof buffer) > 0) {
  }
  ::close(descriptor);
}

std::vector<std::filesystem::path> filesToRead(const CorvaneConstants& mac, const Apps& apps) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(mac.labelsFolder())) files.push_back(entry.path());
  for (const auto& app : apps) {
    const std::filesystem::path contents = *app.appPath + "/Contents";
    files.push_back(contents / "Info.plist");
    files.push_back(contents / "MacOS" / std::filesystem::path(*app.appPath).stem());
  }
  return files;
}

// Runs a program with its output in a file, until it ends.
void runs(const std::vector<std::string>& words, const std::filesystem::path& output) {
  std::vector<char*> arguments;
  for (const auto& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  pid_t child = 0;
  int status = 0;
  if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0)
    ::waitpid(child, &status, 0);
  posix_spawn_file_actions_destroy(&actions);
}

// What was found, a line an application: path, label, version, whether the team is another than the label's,
// whether the store manages it. Both scans say it the same way, so that neither is held against one that does less.
std::vector<std::string> told(const Apps& apps, const std::filesystem::path& root) {
  std::vector<std::string> lines;
  for (const auto& app : apps)
    lines.push_back(fmt::format("{}\t{}\t{}\t{}\t{}", std::filesystem::relative(*app.appPath, root).string(),
                                app.label.text, app.currentVersion.value_or(""), app.teamIDMismatch,
                                app.macAppStoreManaged));
  std::ranges::sort(lines);
  return lines;
}

std::vector<std::string> linesOf(const std::filesystem::path& file) {
  std::ifstream in(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  std::ranges::sort(lines);
  return lines;
}

}  // namespace

int main() {
  auto name = (std::filesystem::temp_directory_path() / "corvane-bench-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) return 1;
  const std::filesystem::path folder = name;
  const CorvaneConstants mac{.root = folder / "mac", .home = folder / "mac/Users/sam"};
  sample::putBigTree({.bundles = kBundles, .labels = kLabels},
                     {mac.root, mac.labelsFolder(), folder / "vendors", "http://127.0.0.1:1"});

  NoLog log;
  Apps apps = AppDiscoveryService({}, false, {}, mac, log).discoverApps().value_or(Apps{});
  const auto files = filesToRead(mac, apps);
  const auto [scan, reading] = bench::medianMicrosecondsInTurns(
      kRuns, [&] { apps = AppDiscoveryService({}, false, {}, mac, log).discoverApps().value_or(Apps{}); },
      [&] {
        for (const auto& file : files) readWhole(file);
      });
  bench::ratioFigure(fmt::format("direct scan, {} bundles, {} labels", kBundles, kLabels), "µs", scan,
                     {.name = "reading the same files", .value = reading}, 3);

  const auto pythonTold = folder / "python.txt";
  const double python = bench::medianMicroseconds(kPythonRuns, [&] {
    runs({"python3", CORVANE_BENCH_FOLDER "/python_scan.py", mac.root.string()}, pythonTold);
  });
  const bool same = !apps.empty() && told(apps, mac.root) == linesOf(pythonTold);
  if (same)
    bench::ratioFigure("direct scan", "µs", scan, {.name = "a plain Python scan", .value = python}, 20, true);
  else
    fmt::print("direct scan | the Python scan did not find the same applications | misses\n");

  const auto [catalog, grep] = bench::medianMicrosecondsInTurns(
      kRuns, [&] { (void)LabelCatalog::read(mac.labelsFolder(), Logger(log, "Bench")).has_value(); },
      [&] {
        runs({"grep", "-r", "name=", mac.labelsFolder().string()}, "/dev/null");
      });
  bench::ratioFigure("label catalogue read and indexed", "µs", catalog, {.name = "one grep", .value = grep}, 1);

  std::filesystem::remove_all(folder);
  return 0;
}
