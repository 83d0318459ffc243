#include "support/running_applications_contract.h"

#include <signal.h>
#include <unistd.h>

#include "base/plist.h"
#include "platform/child_processes.h"
#include "platform/linux/linux_running_applications.h"
#include "platform/linux/process_table.h"
#include "platform/linux/x11_window_order.h"
#include "platform/posix/bundle_path.h"
#include "platform/scripted/scripted_running_applications.h"
#include "platform/scripted/virtual_time.h"
#include "platform/uv/uv_child_processes.h"
#include "support/real_loop.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

namespace {

class RealWorld {
 public:
  RunningApplications& applications() { return applications_; }
  pid_t open(const std::string& name) {
    const auto contents = folder_.path() / "Applications" / (name + ".app") / "Contents";
    folder_.write(
        contents / "Info.plist",
        writePlist(PlistValue(PlistDict{{"CFBundleIdentifier", "test." + name}}), PlistFormat::binary).value());
    const auto executable = contents / "MacOS" / name;
    std::filesystem::create_directories(executable.parent_path());
    std::filesystem::copy_file("/usr/bin/sleep", executable);
    return start(executable, {"1000"});
  }
  pid_t start(const std::string& executable, std::vector<std::string> arguments) {
    auto child = children_.start({.executable = executable, .arguments = std::move(arguments)}, nullptr,
                                 [](Result<ChildExit>) {});
    started_.push_back(child);
    return child->pid();
  }
  bool wait(const std::function<bool()>& done) { return loop_.wait(done); }
  ~RealWorld() {
    for (const auto& child : started_) child->kill();
  }

 private:
  TemporaryFolder folder_;
  RealLoop loop_;
  UvChildProcesses children_{loop_.loop(), loop_.mainQueue()};
  LinuxRunningApplications applications_{loop_.mainQueue()};
  std::vector<std::shared_ptr<ChildHandle>> started_;
};

class ScriptedWorld {
 public:
  RunningApplications& applications() { return applications_; }
  pid_t open(const std::string& name) { return applications_.open("/Applications/" + name + ".app", "test." + name); }
  static bool wait(const std::function<bool()>& done) { return done(); }

 private:
  ScriptedRunningApplications applications_;
};

// A recorded process table, so that odd processes can be had without starting them.
struct RecordedTable : ::testing::Test {
  void record(pid_t pid, const std::string& executable, const std::vector<std::string>& arguments) {
    const auto folder = std::filesystem::path("proc") / std::to_string(pid);
    std::string line;
    for (const auto& argument : arguments) line += argument + '\0';
    folder_.write(folder / "cmdline", line);
    if (!executable.empty()) std::filesystem::create_symlink(executable, folder_.path() / folder / "exe");
  }
  std::map<pid_t, std::string> executables() {
    std::map<pid_t, std::string> seen;
    LinuxRunningApplications applications(machine_.main(), nullptr, folder_.path() / "proc");
    const auto list = applications.list().value();
    for (const auto& process : list) seen[process.pid] = process.executable;
    return seen;
  }

  VirtualMachine machine_;
  TemporaryFolder folder_;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, RunningApplicationsContract, RealWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, RunningApplicationsContract, ScriptedWorld);

TEST_F(RecordedTable, ExecutablesAreToldForBinariesScriptsAndWhatTheKernelHides) {
  const auto script = folder_.writeExecutable("usr/bin/osascript", "#!/bin/sh\n").string();
  record(10, "/Applications/A.app/Contents/MacOS/A", {"A"});
  record(11, "/Applications/B.app/Contents/MacOS/B (deleted)", {"B"});
  record(12, "/usr/bin/zsh", {"/bin/zsh", "-f", script, "-e", "dialog"});
  record(13, "/usr/bin/python3.11", {"python3", "/Applications/Gone.app/Contents/MacOS/Gone"});
  record(14, "/usr/bin/zsh", {"-zsh"});
  record(15, "/usr/bin/bash", {"bash", "-c", "echo /Applications/C.app/Contents"});
  record(16, "", {"/usr/libexec/hidden", "--daemon"});
  record(17, "", {"relative"});
  record(18, "", {});
  record(19, "/usr/bin/vim", {"vim", script});
  EXPECT_EQ(executables(), (std::map<pid_t, std::string>{{10, "/Applications/A.app/Contents/MacOS/A"},
                                                         {11, "/Applications/B.app/Contents/MacOS/B"},
                                                         {12, script},
                                                         {13, "/Applications/Gone.app/Contents/MacOS/Gone"},
                                                         {14, "/usr/bin/zsh"},
                                                         {15, "/usr/bin/bash"},
                                                         {16, "/usr/libexec/hidden"},
                                                         {19, "/usr/bin/vim"}}));
}

TEST_F(RecordedTable, OneWalkServesATurnAndAnUnreadableTableIsNotAnEmptyOne) {
  record(10, "/Applications/A.app/Contents/MacOS/A", {"A"});
  LinuxRunningApplications applications(machine_.main(), nullptr, folder_.path() / "proc");
  EXPECT_EQ(applications.list()->size(), 1U);
  record(11, "/Applications/B.app/Contents/MacOS/B", {"B"});
  EXPECT_EQ(applications.list()->size(), 1U);
  machine_.runUntilIdle();
  EXPECT_EQ(applications.list()->size(), 2U);
  std::filesystem::remove_all(folder_.path() / "proc");
  machine_.runUntilIdle();
  EXPECT_FALSE(applications.list().has_value());
}

TEST_F(RecordedTable, AnIdentifierFollowsItsFileAndADamagedOneIsAbsent) {
  const auto bundle = folder_.path() / "Applications/A.app";
  record(10, bundle / "Contents/MacOS/A", {"A"});
  LinuxRunningApplications applications(machine_.main(), nullptr, folder_.path() / "proc");
  const auto identifier = [&](std::string_view info) {
    folder_.write(bundle / "Contents/Info.plist", info);
    machine_.runUntilIdle();
    return applications.list()->front().bundleIdentifier;
  };
  const auto info = [](std::string_view name) {
    return writePlist(PlistValue(PlistDict{{"CFBundleIdentifier", name}}), PlistFormat::xml).value();
  };
  EXPECT_EQ(identifier(info("org.first")), "org.first");
  EXPECT_EQ(identifier(info("org.second.longer")), "org.second.longer");
  EXPECT_EQ(identifier("<plist><dict>"), std::nullopt);
}

TEST(LinuxRunningApplicationsTest, WhoIsInFrontComesFromTheWindows) {
  struct Windows final : WindowOrder {
    std::optional<pid_t> activeProcess() override { return ::getpid(); }
    bool raise(pid_t pid) override { return pid == 77; }
  };
  VirtualMachine machine;
  LinuxRunningApplications applications(machine.main(), std::make_unique<Windows>());
  const auto list = applications.list().value();
  for (const auto& process : list) EXPECT_EQ(process.active, process.pid == ::getpid());
  EXPECT_TRUE(applications.raise(77));
  EXPECT_FALSE(applications.raise(78));
}

TEST(BundlePathTest, TheOutermostBundleWins) {
  const std::pair<std::string_view, std::optional<std::string>> rows[] = {
      {"/Applications/A.app/Contents/MacOS/A", "/Applications/A.app"},
      {"/A/Outer.app/Contents/Helpers/Inner.app/Contents/MacOS/Inner", "/A/Outer.app"},
      {"/root.app/Applications/A.app/x", "/root.app"},
      {"/A/Upper.APP/x", "/A/Upper.APP"},
      {"/A/A.app", std::nullopt},
      {"/A/A.app/", std::nullopt},
      {"/A/.app/x", std::nullopt},
      {"/A/A.application/x", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [path, bundle] : rows) EXPECT_EQ(outermostBundle(path), bundle) << path;
}

}  // namespace corvane::testing
