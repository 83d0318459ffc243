// The direct scan and the label catalogue, held against reading the same files, one grep and a plain Python scan.
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "base/plist.h"
#include "core/discovery/app_discovery_service.h"
#include "figure.h"
#include "support/mach_o_builder.h"

extern char** environ;

namespace {

using namespace corvane;

constexpr int kBundles = 2000;
constexpr int kLabels = 1000;

class NoLog : public LogSink {
 public:
  void write(LogLevel, std::string_view) override {}
};

void writeFile(const std::filesystem::path& file, std::string_view bytes) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << bytes;
}

std::string infoPlist(int i, std::string_view name) {
  PlistDict info{{"CFBundleExecutable", std::string(name)},
                 {"CFBundleIdentifier", fmt::format("org.example.app{}", i)},
                 {"CFBundleName", std::string(name)},
                 {"CFBundleShortVersionString", fmt::format("{}.{}", i % 9 + 1, i % 7)},
                 {"CFBundleVersion", fmt::format("{}", 1000 + i)},
                 {"LSMinimumSystemVersion", "12.0"},
                 {"NSHighResolutionCapable", true}};
  for (int key = 0; key < i % 12; ++key)
    info[fmt::format("NSUsage{}Description", key)] = "Needed to open your documents.";
  info["CFBundleDocumentTypes"] = PlistArray{PlistDict{{"CFBundleTypeExtensions", PlistArray{"doc", "txt"}}}};
  return writePlist(PlistValue(info), i % 3 == 0 ? PlistFormat::binary : PlistFormat::xml);
}

// The first half of the bundles lies in /Applications, where labels know them; the rest in folders of vendors.
void makeTree(const CorvaneConstants& mac) {
  for (int i = 0; i < kBundles; ++i) {
    const auto name = fmt::format("Program {:04}", i);
    const auto folder =
        i < kLabels ? mac.root / "Applications" : mac.root / fmt::format("Applications/Vendor {}", i % 40);
    const auto contents = folder / (name + ".app") / "Contents";
    writeFile(contents / "Info.plist", infoPlist(i, name));
    const mach_o::Signing signing{.identifier = "org.example", .team = fmt::format("TEAM{:06}", i)};
    const auto arm = mach_o::thin({signing}, {.codeBytes = 6000});
    writeFile(contents / "MacOS" / name, i % 2 == 0 ? arm
                                                    : mach_o::universal({{mach_o::Architecture::x86_64, arm},
                                                                         {mach_o::Architecture::arm64, arm}}));
    if (i % 50 == 0) writeFile(contents / "_MASReceipt/receipt", "receipt");
  }
  for (int i = 0; i < kLabels; ++i)
    writeFile(
        mac.labelsFolder() / fmt::format("program{:04}.sh", i),
        fmt::format(
            "program{0:04}|program{0:04}_intl)\n    name=\"Program {0:04}\"\n    type=\"{1}\"\n"
            "    downloadURL=\"https://example.org/$(curl -fsL \"https://example.org/latest\" | grep -o 'v[0-9.]*')\"\n"
            "    appNewVersion=$(curl -fs https://example.org/{0}/version | sed 's/v//' | head -1)\n"
            "    expectedTeamID=\"TEAM{0:06}\"\n    blockingProcesses=( \"Program {0:04}\" )\n    ;;\n",
            i, i % 2 == 0 ? "dmg" : "pkg"));
}

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

// Runs a program with its output thrown away; false when it could not start or failed.
bool runs(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const auto& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  int status = 1;
  const bool started = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  return started && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int, char** argv) {
  auto name = (std::filesystem::temp_directory_path() / "corvane-bench-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) return 1;
  const CorvaneConstants mac{.root = name, .home = std::filesystem::path(name) / "Users/sam"};
  makeTree(mac);

  NoLog log;
  Apps apps;
  constexpr int kRuns = 9;
  const double scan = bench::medianMicroseconds(
      kRuns, [&] { apps = AppDiscoveryService({}, false, {}, mac, log).discoverApps().value_or(Apps{}); });
  const auto files = filesToRead(mac, apps);
  const double reading = bench::medianMicroseconds(kRuns, [&] {
    for (const auto& file : files) readWhole(file);
  });
  bench::ratioFigure(fmt::format("direct scan, {} bundles, {} labels, {} matched", kBundles, kLabels, apps.size()),
                     "µs", scan, {.name = "reading the same files", .value = reading}, 3);

  const auto script = argv[1] != nullptr ? std::string(argv[1]) : std::string(CORVANE_BENCH_FOLDER "/python_scan.py");
  bool pythonRan = true;
  const double python = bench::medianMicroseconds(3, [&] { pythonRan = runs({"python3", script, name}) && pythonRan; });
  if (pythonRan)
    bench::ratioFigure("direct scan", "µs", scan, {.name = "a plain Python scan", .value = python}, 20, true);

  const double catalog = bench::medianMicroseconds(
      kRuns, [&] { (void)LabelCatalog::read(mac.labelsFolder(), Logger(log, "Bench")).has_value(); });
  const double grep = bench::medianMicroseconds(kRuns, [&] {
    runs({"grep", "-r", "name=", mac.labelsFolder().string()});
  });
  bench::ratioFigure("label catalogue read and indexed", "µs", catalog, {.name = "one grep", .value = grep}, 1);

  std::filesystem::remove_all(name);
  return apps.size() == kLabels && pythonRan ? 0 : 1;
}
