#include "platform/posix/child_helper_registration.h"

#include <signal.h>
#include <unistd.h>

#include "base/json.h"
#include "platform/posix/process_stamp.h"
#include "support/helper_registration_contract.h"
#include "support/real_loop.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {

namespace {

class ChildWorld {
 public:
  ~ChildWorld() {
    if (const auto pid = recordedPid(); pid > 1 && processStamp(pid)) ::kill(pid, SIGKILL);
  }
  HelperRegistration& registration() { return registration_; }
  void install() { folder_.writeExecutable("Helper", "#!/bin/sh\necho $$ >> \"$2/begun\"; exec sleep 1000\n"); }
  bool helperRuns() {
    const auto pid = recordedPid();
    return pid > 1 && processStamp(pid) && begun().ends_with(std::to_string(pid) + "\n");
  }
  void helperEnds() const { ::kill(recordedPid(), SIGKILL); }
  std::ptrdiff_t starts() { return std::ranges::count(begun(), '\n'); }
  bool wait(const std::function<bool()>& done) { return loop_.wait(done); }

 protected:
  std::string begun() { return TemporaryFolder::read(folder_.path() / "begun"); }
  [[nodiscard]] pid_t recordedPid() const {
    const auto json = parseJson(TemporaryFolder::read(record_));
    return json && json->find("pid") != nullptr ? static_cast<pid_t>(*json->find("pid")->integer()) : 0;
  }

  TemporaryFolder folder_;
  RealLoop loop_;
  std::filesystem::path record_ = folder_.path() / "support/helper-registration.json";
  std::filesystem::path socket_ = folder_.path() / std::string(120, 'd') / "helper.sock";
  std::vector<std::string> told_;
  ChildHelperRegistration registration_{loop_.mainQueue(),
                                        {.executable = folder_.path() / "Helper",
                                         .arguments = {"--root", folder_.path()},
                                         .environment = {{"PATH", "/usr/bin:/bin"}}},
                                        {.record = record_, .socket = socket_},
                                        [this](std::string_view line) { told_.emplace_back(line); },
                                        100ms};
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Child, HelperRegistrationContract, ChildWorld);

struct ChildHelperRegistrationTest : ::testing::Test, ChildWorld {
  void writeHelper(const std::string& body) {
    folder_.writeExecutable("Helper", "#!/bin/sh\n" + body);
    std::filesystem::remove(folder_.path() / "up");
  }
  bool isUp() {
    return wait([&] { return std::filesystem::exists(folder_.path() / "up"); });
  }
  Status unregister() {
    std::optional<Status> ended;
    registration_.unregisterDaemon([&](Status status) { ended = std::move(status); });
    EXPECT_FALSE(ended.has_value());
    EXPECT_TRUE(wait([&] { return ended.has_value(); }));
    return *ended;
  }
};

TEST_F(ChildHelperRegistrationTest, TheHelperHasASessionOfItsOwn) {
  writeHelper("echo \"$@\" > \"$2/up\"; exec sleep 1000\n");
  ASSERT_TRUE(registration_.registerDaemon());
  ASSERT_TRUE(isUp());
  EXPECT_NE(::getsid(recordedPid()), ::getsid(0));
}

TEST_F(ChildHelperRegistrationTest, AHelperThatIgnoresThePoliteSignalIsForced) {
  writeHelper("trap '' TERM; touch \"$2/up\"; while :; do sleep 1; done\n");
  ASSERT_TRUE(registration_.registerDaemon());
  ASSERT_TRUE(isUp());
  const auto pid = recordedPid();
  ASSERT_TRUE(unregister());
  EXPECT_FALSE(processStamp(pid).has_value());
}

TEST_F(ChildHelperRegistrationTest, ANumberThatNowBelongsToAnotherProcessIsLeftAlone) {
  writeHelper("exec sleep 1000\n");
  folder_.write(
      "support/helper-registration.json",
      writeJson(JsonObject{{"version", 1}, {"pid", static_cast<std::int64_t>(::getpid())}, {"stamp", "old/1"}}));
  EXPECT_EQ(registration_.status(), HelperStatus::enabled);
  EXPECT_EQ(registration_.printExitCode(), kDaemonNotLoaded);
  ASSERT_TRUE(unregister()) << "and we are still here";
  EXPECT_FALSE(std::filesystem::exists(record_));
}

TEST_F(ChildHelperRegistrationTest, DamagedRecordsAndBinariesAreTold) {
  folder_.writeExecutable("Helper", "no program at all\n\x01\x02");
  folder_.write("support/helper-registration.json", "{\"pid\":");
  EXPECT_EQ(registration_.status(), HelperStatus::enabled);
  EXPECT_EQ(registration_.kickstart(), ENOEXEC);
  const auto registered = registration_.registerDaemon();
  ASSERT_FALSE(registered);
  EXPECT_EQ(registered.error().domain, "CRVDetachedProcess");
  ASSERT_EQ(told_.size(), 1U) << "once a state";
  EXPECT_NE(told_.front().find(record_), std::string::npos);
}

TEST_F(ChildHelperRegistrationTest, BehindADamagedRecordTheHelperIsFoundAtItsSocket) {
  std::filesystem::create_directories(socket_.parent_path());
  writeHelper(
      "cd '" + socket_.parent_path().string() +
      "'; exec python3 -c 'import socket,time; s=socket.socket(socket.AF_UNIX); s.bind(\"helper.sock\"); s.listen(); "
      "open(\"../up\",\"w\"); time.sleep(1000)'\n");
  ASSERT_TRUE(registration_.registerDaemon());
  ASSERT_TRUE(isUp());
  const auto pid = recordedPid();

  folder_.write("support/helper-registration.json", "{}");
  EXPECT_EQ(registration_.printExitCode(), 0);
  EXPECT_EQ(registration_.kickstart(), 0);
  EXPECT_EQ(recordedPid(), pid) << "no second helper, and the record is whole again";

  folder_.write("support/helper-registration.json", "torn");
  ASSERT_TRUE(unregister());
  EXPECT_FALSE(processStamp(pid).has_value());
  EXPECT_FALSE(std::filesystem::exists(record_));
  EXPECT_EQ(told_.size(), 2U);
}

}  // namespace corvane::testing
