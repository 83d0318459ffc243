// The tool fetched and put in place: the web and zsh are scripted, time is virtual, files are real.
#include "helper/tool_keeper.h"

#include <sys/stat.h>
#include <unistd.h>

#include "helper/packed_tree.h"
#include "platform/scripted/scripted_child_processes.h"
#include "platform/scripted/scripted_http_client.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

constexpr const char* kUrl = "https://host/repos/Installomator/Installomator/tarball/";

std::string script(const std::string& version, const std::string& date = "2026-07-03") {
  return "#!/bin/zsh\nVERSION=\"" + version + "\"\nVERSIONDATE=\"" + date + "\"\n";
}

struct ToolKeeperFixture : ::testing::Test {
  VirtualMachine machine;
  RecordingLog log;
  testing::TemporaryFolder folder;
  HelperSetting setting;
  ScriptedHttpClient http{machine.main()};
  int syntax = 0;
  ScriptedChildProcesses children{
      machine.main(), [this](const ChildSpec&) { return ScriptedChild{.exit = ChildExit{.code = syntax}}; }};
  std::optional<ToolKeeper> keeper;

  ToolKeeperFixture() {
    setting.constants.root = folder.path();
    std::filesystem::create_directories(setting.constants.supportFolder());
  }
  void start(std::optional<std::string> host = "https://host") {
    keeper.emplace(ToolKeeper::Services{.main = machine.main(),
                                        .work = machine.work(),
                                        .clock = machine.clock(),
                                        .log = log,
                                        .http = http,
                                        .children = children,
                                        .setting = [this] { return setting; },
                                        .zsh = "/bin/zsh",
                                        .account = [] { return std::nullopt; },
                                        .host = std::move(host),
                                        .ownUid = geteuid()});
    keeper->start();
    machine.runUntilIdle();
  }
  void offer(const std::string& kind, const std::string& text, const std::vector<std::string>& labels = {"quill"}) {
    std::string tar =
        testing::tarEntry("Installomator-1/", "", '5') + testing::tarEntry("Installomator-1/Installomator.sh", text);
    for (const char* part : {"header", "functions", "arguments", "main"})
      tar +=
          testing::tarEntry(std::string("Installomator-1/fragments/") + part + ".sh", std::string("# ") + part + "\n");
    tar += testing::tarEntry("Installomator-1/fragments/version.sh", "10.10beta\n");
    for (const auto& label : labels)
      tar += testing::tarEntry("Installomator-1/fragments/labels/" + label + ".sh", label + ")\n    ;;\n");
    http.pages[kUrl + kind] = {.status = 200, .body = testing::gzipped(tar + testing::tarEnd()), .headers = {}};
  }
  [[nodiscard]] std::string tool() const {
    return testing::TemporaryFolder::read(setting.constants.installomatorScript());
  }
  [[nodiscard]] std::vector<std::string> labels() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(setting.constants.labelsFolder()))
      names.push_back(entry.path().stem());
    std::ranges::sort(names);
    return names;
  }
  [[nodiscard]] std::size_t leftOvers() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(setting.constants.supportFolder())) {
      const auto name = entry.path().filename().string();
      count += name.ends_with(".new") || name.ends_with(".old") || name.ends_with(".download") ? 1 : 0;
    }
    return count;
  }
};

TEST_F(ToolKeeperFixture, AMissingToolIsTriedForEveryMinuteAndThenLookedAfterEveryDay) {
  start();
  machine.advance(5min);
  EXPECT_EQ(http.requests().size(), 6U);
  EXPECT_EQ(log.count("was not taken"), 1U) << "one trouble, one line";
  offer("release", script("10.9"));
  machine.advance(70s);
  EXPECT_EQ(tool(), script("10.9"));
  EXPECT_EQ(labels(), std::vector<std::string>{"quill"});
  EXPECT_EQ(std::filesystem::status(setting.constants.installomatorScript()).permissions(),
            std::filesystem::perms(0755));
  EXPECT_EQ(children.started().front().arguments.at(1), "-n") << "checked before it is put in place";
  const auto asked = http.requests().size();
  machine.advance(23h);
  EXPECT_EQ(http.requests().size(), asked);
  offer("release", script("10.10"), {"quill", "stamp"});
  machine.advance(1h + 2min);
  EXPECT_EQ(tool(), script("10.10"));
  EXPECT_EQ(labels(), (std::vector<std::string>{"quill", "stamp"}));
  EXPECT_EQ(leftOvers(), 0U);
}

TEST_F(ToolKeeperFixture, NothingBrokenAndNothingOlderTakesThePlaceOfAWorkingTool) {
  offer("release", script("10.9"));
  start();
  const auto page = [this]() -> auto& { return http.pages[std::string(kUrl) + "release"]; };
  const auto whole = page();
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"older", [&] { offer("release", script("10.8")); }},
      {"older by its date", [&] { offer("release", script("10.9", "2026-07-02")); }},
      {"no version", [&] { offer("release", "#!/bin/zsh\n"); }},
      {"no labels", [&] { offer("release", script("11.0"), {}); }},
      {"torn", [&] { page() = {.status = 200, .body = whole.body.substr(0, 200), .headers = {}}; }},
      {"an error page", [&] { page() = {.status = 403, .body = whole.body, .headers = {}}; }},
      {"damaged syntax", [&] { offer("release", script("11.0")), syntax = 1; }},
  };
  for (const auto& [what, change] : rows) {
    SCOPED_TRACE(what);
    change();
    log.clear();
    machine.advance(25h);
    EXPECT_TRUE(log.holds("was not taken"));
    EXPECT_EQ(tool(), script("10.9"));
    EXPECT_EQ(labels(), std::vector<std::string>{"quill"});
    EXPECT_EQ(leftOvers(), 0U);
    syntax = 0;
  }
}

TEST_F(ToolKeeperFixture, AHostIsNotAskedEveryMinuteForWhatIsOfNoUse) {
  offer("release", script("10.9"));
  start();
  http.pages[std::string(kUrl) + "release"].body = "<html>";
  machine.advance(kToolInterval + 2min);
  const auto asked = http.requests().size();
  machine.advance(30min);
  EXPECT_EQ(http.requests().size(), asked);
  std::filesystem::remove(setting.constants.installomatorScript());
  machine.advance(5min);
  EXPECT_GE(http.requests().size(), asked + 4) << "but while there is no tool at all";
}

TEST_F(ToolKeeperFixture, AnotherSourceIsTakenAtOnceAlsoWhenItIsOlder) {
  setting.config.installomatorVersion = InstallomatorVersion::main;
  setting.config.installomatorAssembleFromFragments = false;
  offer("main", script("10.10beta"));
  offer("release", script("10.9"));
  start();
  EXPECT_EQ(tool(), script("10.10beta"));
  setting.config.installomatorVersion = InstallomatorVersion::release;
  machine.advance(70s);
  EXPECT_EQ(tool(), script("10.9"));
}

TEST_F(ToolKeeperFixture, AnAssembledToolIsTheFragmentsInTheirOrder) {
  setting.config.installomatorVersion = InstallomatorVersion::main;
  setting.config.installomatorAssembleFromFragments = true;
  offer("main", script("10.9"), {"stamp", "quill"});
  start();
  EXPECT_EQ(tool(),
            "# header\nVERSION=\"10.10beta\"\nVERSIONDATE=\"2026-11-01\"\n\n# functions\n# arguments\nquill)\n    ;;\n"
            "stamp)\n    ;;\n# main\n");
}

TEST_F(ToolKeeperFixture, TheTokenGoesWithTheRequestOnlyWhenItIsSwitchedOnAndNeverToTheLog) {
  setting.config.githubAPIToken = " secret\n";
  start();
  const auto told = [this] {
    return std::ranges::count(http.requests().back().headers,
                              std::pair<std::string, std::string>("Authorization", "Bearer secret"));
  };
  EXPECT_EQ(told(), 0);
  setting.config.githubAPIAuthEnabled = true;
  machine.advance(70s);
  EXPECT_EQ(told(), 1);
  EXPECT_FALSE(log.holds("secret"));
}

TEST_F(ToolKeeperFixture, ACustomEditionIsTakenFromATrustedFolderOrScript) {
  setting.config.installomatorVersion = InstallomatorVersion::custom;
  setting.config.installomatorAssembleFromFragments = false;
  setting.config.installomatorCustomPath = "/srv/tool";
  folder.write("srv/tool/Installomator.sh", script("7"));
  folder.write("srv/tool/fragments/labels/ours.sh", "ours)\n    ;;\n");
  folder.write("srv/tool/fragments/labels/readme.txt", "no label");
  std::filesystem::create_symlink("/etc/passwd", folder.path() / "srv/tool/fragments/labels/link.sh");
  start(std::nullopt);
  EXPECT_EQ(tool(), script("7"));
  EXPECT_EQ(labels(), std::vector<std::string>{"ours"}) << "no links";
  EXPECT_TRUE(http.requests().empty());

  folder.write("srv/script.sh", script("8"));
  setting.config.installomatorCustomPath = "/srv/script.sh";
  machine.advance(70s);
  EXPECT_EQ(tool(), script("8"));
  EXPECT_EQ(labels(), std::vector<std::string>{"ours"}) << "a script alone leaves the labels";

  folder.write("srv/script.sh", script("9"));
  chmod((folder.path() / "srv").c_str(), 0777);
  machine.advance(25h);
  EXPECT_EQ(tool(), script("8"));
  EXPECT_TRUE(log.holds("may be written to by others"));
  setting.config.installomatorCustomPath = "../tool";
  machine.advance(70s);
  EXPECT_TRUE(log.holds("names no absolute path"));
}

TEST_F(ToolKeeperFixture, WithoutAHostNothingIsFetched) {
  offer("release", script("10.9"));
  start(std::nullopt);
  machine.advance(24h);
  EXPECT_TRUE(http.requests().empty());
}

TEST_F(ToolKeeperFixture, ACrashBetweenTheTwoRenamesIsMadeGood) {
  offer("release", script("10.9"));
  start();
  keeper.reset();
  http.pages.clear();
  const auto fragments = setting.constants.fragmentsPath();
  std::filesystem::rename(fragments, fragments.string() + ".old");
  folder.write(std::filesystem::relative(fragments.string() + ".new/labels/half.sh", folder.path()), "half");
  start();
  EXPECT_EQ(labels(), std::vector<std::string>{"quill"});
  EXPECT_EQ(leftOvers(), 0U);
}

}  // namespace
}  // namespace corvane
