// What a killed helper's record leads the next one to do, with real processes.
#include "helper/run_record.h"

#include <fmt/format.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/process_stamp.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"
#include "support/started_program.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane {
namespace {

const std::filesystem::path kRecord = "/helper-run.json";

struct RunRecordFixture : ::testing::Test {
  VirtualMachine machine;
  RecordingLog log;
  ScriptedFiles files{machine.clock()};
  testing::TemporaryFolder folder;
  pid_t leader = -1;

  ~RunRecordFixture() override {
    if (leader <= 1) return;
    ::kill(-leader, SIGKILL);
    ::waitpid(leader, nullptr, 0);
  }
  // A session of its own that runs `script` in the folder, until it has made the file "ready".
  void startSession(std::string script) {
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    script = fmt::format("cd '{}'; {}", folder.path().string(), script);
    const char* arguments[] = {"sh", "-c", script.c_str(), nullptr};
    ASSERT_EQ(posix_spawn(&leader, "/bin/sh", nullptr, &attributes, const_cast<char**>(arguments), environ), 0);
    posix_spawnattr_destroy(&attributes);
    ASSERT_TRUE(testing::eventually([&] { return std::filesystem::exists(folder.path() / "ready"); }));
  }
  void writeRecord() {
    RunRecord record(kRecord, files, machine.clock(), log);
    ASSERT_TRUE(record.begin({Label("quill")}));
    record.working(Label("quill"), 0, leader);
  }
  void settle(Duration grace) {
    RunRecord(kRecord, files, machine.clock(), log, grace).settle();
    EXPECT_FALSE(files.exists(kRecord));
  }
};

TEST_F(RunRecordFixture, EndsWhatOutlivedTheToolAndIgnoresThePoliteSignal) {
  startSession("(trap '' TERM; touch ready; exec sleep 600) & exec sleep 600");
  writeRecord();
  const auto stamp = processStamp(leader).value();
  ASSERT_EQ(processesOfSession(leader, stamp).size(), 2U);
  ::kill(leader, SIGKILL);
  ASSERT_TRUE(testing::eventually([&] { return processesOfSession(leader, stamp).size() == 1; }));
  settle(100ms);
  EXPECT_TRUE(processesOfSession(leader, stamp).empty());
  EXPECT_TRUE(log.holds("Ended the installer that was left running for quill."));
}

TEST_F(RunRecordFixture, GivesTheToolItsTimeToTidyUp) {
  startSession("trap 'sleep 0.1; touch tidied; exit' TERM; touch ready; while :; do sleep 0.01; done");
  writeRecord();
  settle(kToolStopGrace);
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "tidied"));
  EXPECT_FALSE(processStamp(leader));
}

TEST_F(RunRecordFixture, ADamagedRecordCountsAsAbsent) {
  files.put(kRecord, R"({"version":1,"lab)");
  settle(0ms);
  EXPECT_EQ(log.count("is damaged and counts as absent"), 1U);
}

TEST_F(RunRecordFixture, LeavesAloneWhatBearsTheNumberByChance) {
  startSession("touch ready; exec sleep 600");
  writeRecord();
  const auto stamp = processStamp(leader).value();
  const auto written = files.content(kRecord).value();
  for (const auto& other : {"another-boot" + stamp.substr(stamp.rfind('/')), stamp + "0", std::string()}) {
    auto changed = written;
    changed.replace(changed.find(stamp), stamp.size(), other);
    files.put(kRecord, changed);
    settle(100ms);
    EXPECT_EQ(processStamp(leader), stamp) << other;
  }
  EXPECT_FALSE(log.holds("Ended the installer"));
}

}  // namespace
}  // namespace corvane
