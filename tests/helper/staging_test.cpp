// Installers downloaded ahead: the tool is scripted and leaves real files, time is virtual.

#include "helper/run_desk.h"
#include "helper/runner_fixture.h"

namespace corvane {
namespace {

struct Staging : RunnerFixture {
  RunDesk desk{{.log = log, .runner = runner, .stager = stager}};
  std::string leaves = "Quill 2.0.zip";  // the archive that the tool downloads; empty for none
  ScriptedChild download{.takes = 1min};

  Staging() {
    label("quill", "1.0", "2.0");
    plays["quill"] = {"2.0", {.takes = 1min}};
    onChild = [this, install = onChild](const ChildSpec& spec) {
      if (isStaging(spec)) return playDownload(spec);
      auto child = install(spec);
      for (const auto& argument : spec.arguments)
        if (argument.starts_with("downloadURL='"))
          child.lines.push_back("2026-11-22 21:04:42 : REQ   : quill : Downloading " +
                                argument.substr(13, argument.size() - 14) + " to Quill.zip");
      return child;
    };
  }
  static bool isStaging(const ChildSpec& spec) { return std::ranges::count(spec.arguments, "DEBUG=1") == 1; }
  ScriptedChild playDownload(const ChildSpec& spec) {
    auto child = download;
    if (leaves.empty()) return child;
    folder.write(below(std::filesystem::path(spec.folder) / leaves), "archive");
    child.lines = {"2026-11-22 21:04:42 : INFO  : quill : Downloaded " + leaves +
                   " – Type is Zip archive – SHA is 1 – Size is 9 kB"};
    return child;
  }
  void ask(const std::vector<const char*>& install, const std::vector<const char*>& stage) {
    const auto labels = [](const auto& names) { return Labels(names.begin(), names.end()); };
    desk.ask({.labels = labels(install), .alsoStageLabels = labels(stage)}, [](const Result<PatchRunAnswer>&) {});
    machine.advance(5min);
  }
  [[nodiscard]] bool isStaged() { return staged.find(Label("quill"), "2.0").has_value(); }
  [[nodiscard]] std::vector<std::string> lying() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(staged.folder()))
      if (entry.path().filename() != "staged.json")
        names.push_back(std::filesystem::relative(entry.path(), staged.folder()).string());
    std::ranges::sort(names);
    return names;
  }
};

TEST_F(Staging, TheToolDownloadsInAFolderOfItsOwnAndTheNextInstallUsesTheFile) {
  setting.config.installomatorOptions = "NOTIFY=all PROXY=proxy:80";
  ask({}, {"quill"});
  ASSERT_EQ(children.started().size(), 1U);
  const auto& spec = children.started().front();
  EXPECT_EQ(spec.executable, spec.folder + "/Installomator.sh");
  const auto last = [&](const std::string& key) {
    std::string value;
    for (const auto& argument : spec.arguments)
      if (argument.starts_with(key + "=")) value = argument.substr(key.size() + 1);
    return value;
  };
  EXPECT_EQ(last("DEBUG"), "1");
  EXPECT_EQ(last("NOTIFY"), "silent");
  EXPECT_EQ(last("BLOCKING_PROCESS_ACTION"), "ignore");
  EXPECT_EQ(last("PROXY"), "'proxy:80'") << "the way out to the network stays";
  EXPECT_EQ(lying(), (std::vector<std::string>{"quill", "quill/Quill 2.0.zip"}));
  EXPECT_TRUE(receipts.readAllReceipts().empty());
  EXPECT_FALSE(files.exists("/helper-staging.json"));

  ask({"quill"}, {});
  ASSERT_EQ(children.started().size(), 2U);
  EXPECT_EQ(children.started().back().arguments.back(),
            "downloadURL='" + fileAddress(staged.folder() / "quill/Quill 2.0.zip") + "'");
  EXPECT_EQ(receipts.readAllReceipts().front().usedStagedInstaller, true);
  EXPECT_TRUE(lying().empty()) << "it has served";
}

TEST_F(Staging, ARunStagesBeforeItInstallsAndTellsOfItselfMeanwhile) {
  desk.ask({.labels = {Label("quill")}, .alsoStageLabels = {Label("quill")}}, [](const Result<PatchRunAnswer>&) {});
  machine.advance(30s);
  EXPECT_EQ(desk.progress(), (PatchProgressInfo{true, "quill", 0, 1}));
  machine.advance(5min);
  ASSERT_EQ(children.started().size(), 2U);
  EXPECT_TRUE(isStaging(children.started().front()));
  EXPECT_EQ(receipts.readAllReceipts().front().usedStagedInstaller, true);
}

TEST_F(Staging, OnlyWhatNeedsADownloadIsStagedAndOnlyOnce) {
  label("current", "2.0", "2.0");
  label("tooled", "1.0", "2.0");
  facts.known[Label("tooled")].ownUpdateToolExists = true;
  label("adobereaderdc", "1.0", "2.0");
  ask({}, {"current", "tooled", "adobereaderdc", "nosuch", "quill", "quill"});
  EXPECT_EQ(children.started().size(), 1U);
  ask({}, {"quill"});
  EXPECT_EQ(children.started().size(), 1U);
  offer("quill", "3.0");
  machine.advance(kVersionMemory);
  ask({}, {"quill"});
  EXPECT_EQ(children.started().size(), 2U) << "a newer version is out";
  EXPECT_TRUE(staged.find(Label("quill"), "3.0"));
  EXPECT_FALSE(isStaged());
}

TEST_F(Staging, WhatDoesNotEndWellLeavesNothing) {
  const std::tuple<const char*, std::string, ScriptedChild, const char*> rows[] = {
      {"another team's", "a.zip", {.exit = ChildExit{.code = 5}}, "ended with code 5"},
      {"no download told", "", {}, "told of no download"},
      {"hangs", "a.zip", {.takes = 3h}, "took too long"},
      {"cannot be started", "", {.exit = failure("CRVChildProcess", EACCES, "no leave")}, "no leave"},
  };
  for (const auto& [what, archive, child, line] : rows) {
    leaves = archive;
    download = child;
    log.clear();
    ask({}, {"quill"});
    machine.advance(kStagingTimeLimit);
    EXPECT_TRUE(log.holds(line)) << what;
    EXPECT_TRUE(lying().empty()) << what;
  }
  folder.write("elsewhere", "precious");
  onChild = [](const ChildSpec&) {
    return ScriptedChild{.lines = {"2026-11-22 21:04:42 : INFO  : quill : Downloaded ../../elsewhere – Type is Zip"}};
  };
  ask({}, {"quill"});
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "elsewhere"));
  EXPECT_TRUE(lying().empty());
}

TEST_F(Staging, AFailedInstallFromAStagedFileDownloadsTheNextTime) {
  ask({}, {"quill"});
  plays["quill"] = {"", {.exit = ChildExit{.code = 10}, .takes = 1min}};
  ask({"quill"}, {});
  EXPECT_TRUE(isStaged()) << "declined; it still lies ready";
  plays["quill"] = {"", {.exit = ChildExit{.code = 3}, .takes = 1min}};
  machine.advance(1s);
  ask({"quill"}, {});
  EXPECT_EQ(receipts.readAllReceipts().front().usedStagedInstaller, true);
  EXPECT_FALSE(isStaged());
  machine.advance(1s);
  ask({"quill"}, {});
  EXPECT_EQ(receipts.readAllReceipts().front().usedStagedInstaller, false);
}

TEST_F(Staging, TheDiskKeepsItsRoom) {
  freeBytes = kStagingNeedsFree - 1;
  ask({}, {"quill"});
  EXPECT_TRUE(children.started().empty());
  freeBytes = kStagingNeedsFree;
  download.takes = 10min;
  desk.ask({.labels = {}, .alsoStageLabels = {Label("quill")}}, [](const Result<PatchRunAnswer>&) {});
  machine.advance(1min);
  EXPECT_EQ(children.running(), 1U);
  freeBytes = kStagingLeavesFree - 1;
  machine.advance(kFreeSpaceLook + 2s);
  EXPECT_EQ(children.running(), 0U);
  EXPECT_TRUE(log.holds("were left free"));
  EXPECT_TRUE(lying().empty());
}

TEST_F(Staging, AStartKeepsOnlyWhatIsWhole) {
  ask({}, {"quill"});
  const auto record = staged.folder() / "quill/staged.json";
  const auto whole = testing::TemporaryFolder::read(record);
  const auto archive = staged.folder() / "quill/Quill 2.0.zip";
  const auto restart = [&] {
    StagedInstallers next(staged.folder(), machine.clock(), log);
    EXPECT_TRUE(next.settle());
    return next.find(Label("quill"), "2.0").has_value();
  };
  EXPECT_TRUE(restart());
  folder.write(below(staged.folder() / "stamp.partial/half.zip"), "ha");
  EXPECT_TRUE(restart());
  EXPECT_FALSE(std::filesystem::exists(staged.folder() / "stamp.partial")) << "of a helper that was killed";

  const std::function<void()> damages[] = {
      [&] { std::ofstream(archive) << "arc"; },
      [&] { std::filesystem::remove(record); },
      [&] { std::ofstream(record) << whole.substr(0, 20); },
      [&] {
        std::filesystem::remove(archive);
        std::filesystem::create_symlink("/etc/hostname", archive);
      },
      [&] {
        auto other = whole;
        other.replace(other.find("\"label\":\"quill\""), 15, "\"label\":\"stamp\"");
        std::ofstream(record) << other;
      },
  };
  for (const auto& damage : damages) {
    std::filesystem::create_directories(archive.parent_path());
    std::filesystem::remove(archive);
    std::ofstream(archive) << "archive";
    std::ofstream(record) << whole;
    ASSERT_TRUE(restart());
    damage();
    EXPECT_FALSE(restart());
    EXPECT_TRUE(lying().empty());
  }
}

TEST_F(Staging, WhatIsOldOrNotWantedAnyMoreIsCleanedAway) {
  ask({}, {"quill"});
  install("quill", "2.0");
  ask({}, {"quill"});
  EXPECT_TRUE(lying().empty()) << "it was updated in another way";
  install("quill", "1.0");
  ask({}, {"quill"});
  EXPECT_TRUE(isStaged());
  machine.advance(kStagedKept + 1s);
  label("stamp", "2.0", "2.0");
  ask({}, {"stamp"});
  EXPECT_TRUE(lying().empty());
}

TEST_F(Staging, StoppingEndsTheDownload) {
  download.takes = 30min;
  std::optional<Result<PatchRunAnswer>> answer;
  desk.ask({.labels = {Label("quill")}, .alsoStageLabels = {Label("quill")}},
           [&](Result<PatchRunAnswer> ended) { answer = std::move(ended); });
  machine.advance(1min);
  desk.stop();
  machine.advance(1s);
  ASSERT_TRUE(answer && !*answer);
  EXPECT_TRUE(isHelperError(answer->error(), HelperErrorCode::stopping));
  EXPECT_EQ(children.running(), 0U);
  EXPECT_TRUE(lying().empty());
  EXPECT_TRUE(receipts.readAllReceipts().empty());
}

TEST_F(Staging, ADownloadMakesWayForAnInstallAndIsBegunAgain) {
  label("stamp", "1.0", "2.0");
  plays["stamp"] = {"2.0", {.takes = 1min}};
  download.takes = 30min;
  int answered = 0;
  const auto count = [&](const Result<PatchRunAnswer>& answer) { answered += answer ? 1 : 0; };
  desk.ask({.labels = {}, .alsoStageLabels = {Label("quill"), Label("stamp")}}, count);
  machine.advance(1min);
  desk.ask({.labels = {Label("stamp")}, .alsoStageLabels = {}}, count);
  machine.advance(2min);
  EXPECT_EQ(answered, 2);
  EXPECT_EQ(receipts.readAllReceipts().front().label, Label("stamp"));
  EXPECT_TRUE(lying().empty());
  download.takes = 1min;
  ask({}, {"quill"});
  EXPECT_TRUE(isStaged());
}

TEST(StagedInstallers, AnAddressNamesTheFileWithoutAnyCharacterThatAShellOrAToolReads) {
  EXPECT_EQ(fileAddress("/Library/Application Support/a'b%\"$(x).zip"),
            "file:///Library/Application%20Support/a%27b%25%22%24%28x%29.zip");
}

}  // namespace
}  // namespace corvane
