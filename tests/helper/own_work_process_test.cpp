// The real daemon at work by itself: real processes, the real process list, real files.
#include "base/plist.h"
#include "core/history/helper_state_stores.h"
#include "helper/helper_process.h"
#include "platform/linux/sys_network_probe.h"
#include "platform/posix/posix_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"

namespace corvane {
namespace {

struct OwnWorkProcess : HelperProcess {
  void SetUp() override {
    VirtualMachine machine;
    SysNetworkProbe probe(machine.main());
    bool linked = false;
    probe.probe([&](const NetworkState& state) { linked = state.hasLink; });
    machine.runUntilIdle();
    if (!linked) GTEST_SKIP() << "without a network the helper does not begin";
    extraArguments_ = {"--own-work-after", "0"};
    HelperProcess::SetUp();
  }
  void beforeStart() override {
    folder_.write("Users/ann/Library/Preferences/org.corvane.Corvane.plist",
                  writePlist(PlistDict{{"BackgroundPatchClosedAppsEnabled", true},
                                       {"BackgroundPatchClosedAppsScheduler", "helperDaemon"},
                                       {"BackgroundPatchClosedAppsBlockList", "slow"},
                                       {"WorkflowStageUpdates", false}},
                             PlistFormat::xml)
                      .value());
  }
  void TearDown() override {
    HelperProcess::TearDown();
    if (application_ <= 0) return;
    kill(application_, SIGKILL);
    waitpid(application_, nullptr, 0);
  }
  // A process whose executable lies in the bundle.
  void open(const std::string& name) {
    const auto program = folder_.path() / "Applications" / (name + ".app") / "Contents/MacOS" / name;
    std::filesystem::create_directories(program.parent_path());
    std::filesystem::copy_file("/bin/sleep", program);
    const char* arguments[] = {program.c_str(), "600", nullptr};
    ASSERT_EQ(posix_spawn(&application_, program.c_str(), nullptr, nullptr, const_cast<char**>(arguments), environ), 0);
  }
  [[nodiscard]] HelperPatchState state() {
    return HelperBackgroundPatchStateStore(places_.helperState(), files_, log_).read().value_or(HelperPatchState{});
  }

  PosixFiles files_;
  RecordingLog log_;
  pid_t application_ = -1;
};

TEST_F(OwnWorkProcess, UpdatesWhatIsClosedAndLeavesTheInventory) {
  ASSERT_TRUE(eventually([&] { return state().lastBackgroundPatchSummary.has_value(); })) << log();
  const auto told = state();
  EXPECT_EQ(told.lastBackgroundPatchSummary->labels, Labels{Label("quill")});
  EXPECT_EQ(told.lastBackgroundPatchSummary->patchedCount, 1);
  EXPECT_EQ(receipts().size(), 1U);
  ASSERT_TRUE(told.lastScheduledDiscoverySummary);
  EXPECT_EQ(told.lastScheduledDiscoverySummary->pendingUpdateCount, 2);
  const auto apps = HelperScheduledDiscoveryAppsStore(places_.helperDiscoveredApps(), files_, log_).read();
  ASSERT_TRUE(apps);
  EXPECT_EQ(appWith(*apps, Label("quill"))->currentVersion, "1.0");
  EXPECT_TRUE(log_.lines().empty());
}

struct OpenApplication : OwnWorkProcess {
  void beforeStart() override {
    OwnWorkProcess::beforeStart();
    open("Quill");
  }
};

TEST_F(OpenApplication, IsLeftAlone) {
  ASSERT_TRUE(eventually([&] { return log().find("No closed apps require updates") != std::string::npos; })) << log();
  EXPECT_NE(log().find("Quill.app is currently running"), std::string::npos);
  EXPECT_TRUE(receipts().empty());
}

}  // namespace
}  // namespace corvane
