// A patch runner with all that it stands on: processes are scripted, time is virtual, bundles and labels are real
// files.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include "helper/patch_runner.h"
#include "helper/stager.h"
#include "platform/scripted/scripted_child_processes.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {

inline const std::filesystem::path kReceipts = "/receipts.jsonl";
inline const std::filesystem::path kRecord = "/helper-run.json";

struct RunnerFixture : ::testing::Test {
  VirtualMachine machine;
  ScriptedEntropy entropy;
  RecordingLog log;
  testing::TemporaryFolder folder;
  ScriptedFiles files{machine.clock()};
  WorkQueue& scans;
  HelperSetting setting;
  struct ToolPlay {
    std::string installs;
    ScriptedChild child;
  };
  std::map<std::string, ToolPlay> plays;
  std::function<ScriptedChild(const ChildSpec&)> onChild = [this](const ChildSpec& spec) {
    const auto& label = spec.arguments.at(0);
    const auto& play = plays[label];
    if (!play.installs.empty()) install(label, play.installs);
    return play.child;
  };
  ScriptedChildProcesses children{machine.main(), [this](const ChildSpec& spec) { return onChild(spec); }};
  VersionChecker versions{{.children = children, .main = machine.main(), .entropy = entropy, .log = log},
                          "/bin/zsh",
                          [] { return std::nullopt; }};
  AppDiscoverer discoverer{{.work = scans,
                            .main = machine.main(),
                            .clock = machine.clock(),
                            .log = log,
                            .versions = versions,
                            .setting = [this] { return setting; }}};
  ReceiptManager receipts{kReceipts, files, log};
  RunRecord record{kRecord, files, machine.clock(), log};
  StagedInstallers staged{folder.path() / "Staging", machine.clock(), log};
  RunRecord stagingRecord{"/helper-staging.json", files, machine.clock(), log};
  struct Facts final : LabelInstallFactsSource {
    std::map<Label, LabelInstallFacts> known;
    [[nodiscard]] LabelInstallFacts installFacts(const Label& label) const override {
      const auto found = known.find(label);
      return found == known.end() ? LabelInstallFacts{} : found->second;
    }
  } facts;
  std::uint64_t freeBytes = kStagingNeedsFree;
  Stager stager{{.children = children,
                 .main = machine.main(),
                 .work = machine.work(),
                 .clock = machine.clock(),
                 .log = log,
                 .discoverer = discoverer,
                 .staged = staged,
                 .record = stagingRecord,
                 .setting = [this] { return setting; },
                 .facts = facts,
                 .freeBytes = [this](const std::filesystem::path&) { return freeBytes; },
                 .toolHome = "/var/empty",
                 .ownUid = geteuid()}};
  PatchRunner runner{{.children = children,
                      .main = machine.main(),
                      .clock = machine.clock(),
                      .log = log,
                      .receipts = receipts,
                      .discoverer = discoverer,
                      .record = record,
                      .staged = staged,
                      .setting = [this] { return setting; },
                      .toolHome = "/var/empty",
                      .ownUid = geteuid()}};

  // Scans of folders are the machine's own work, or that of `work`.
  explicit RunnerFixture(WorkQueue* work = nullptr) : scans(work == nullptr ? machine.work() : *work) {
    setting.constants.root = folder.path();
    setting.constants.home = folder.path() / "Users/ann";
    const auto tool = setting.constants.installomatorScript();
    folder.writeExecutable(below(tool), "#!/bin/sh\n");
    chmod(tool.c_str(), 0755);
    EXPECT_TRUE(staged.settle());
  }
  [[nodiscard]] std::filesystem::path below(const std::filesystem::path& path) const {
    return std::filesystem::relative(path, folder.path());
  }
  void install(const std::string& name, const std::string& version) const {
    folder.write("Applications/" + name + ".app/Contents/Info.plist",
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                 "<key>CFBundleShortVersionString</key><string>" +
                     version + "</string><key>CFBundleIdentifier</key><string>org.example." + name +
                     "</string></dict></plist>");
  }
  // A label whose application is `installed` (not at all when empty) and whose vendor offers `latest`.
  void label(const std::string& name, const std::string& installed, const std::string& latest) const {
    if (!installed.empty()) install(name, installed);
    offer(name, latest);
  }
  void offer(const std::string& name, const std::string& latest) const {
    folder.write(below(setting.constants.labelsFolder() / (name + ".sh")),
                 name + ")\n    name=\"" + name + "\"\n    type=\"zip\"\n    appNewVersion=\"" + latest +
                     "\"\n    downloadURL=\"https://example.org\"\n    expectedTeamID=\"ABCDE12345\"\n    ;;\n");
  }
};

}  // namespace corvane
