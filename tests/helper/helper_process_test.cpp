// The real daemon on a small tree of its own: what it answers, what it writes, and what a kill leaves behind.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <thread>

#include "base/atomic_file.h"
#include "base/frame.h"
#include "core/client/helper_messages.h"
#include "core/places.h"
#include "core/records/history_records.h"
#include "support/temporary_folder.h"

namespace corvane {
namespace {

constexpr const char* kInfo = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleShortVersionString</key><string>VERSION</string>
<key>CFBundleIdentifier</key><string>org.example.quill</string></dict></plist>
)";

// Installs by writing the version into the bundle; "broken" ends well and does nothing; "slow" waits to be killed.
constexpr const char* kTool = R"(#!/bin/sh
root="${0%/Library/*}"
echo "2026-11-22 21:04:42 : REQ   : $1 : Start"
case "$1" in
  quill) sed -i "s/>1.0</>2.0</" "$root/Applications/Quill.app/Contents/Info.plist" ;;
  slow) touch "$root/slow-started"; exec sleep 600 ;;
  declined) exit 10 ;;
esac
env > "$root/tool-environment"; printf '%s\n' "$@" > "$root/tool-arguments"
)";

bool eventually(const std::function<bool()>& holds) {
  for (int i = 0; i < 2000; ++i) {
    if (holds()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

class HelperProcess : public ::testing::Test {
 protected:
  void SetUp() override {
    chmod(folder_.path().c_str(), 0755);
    places_.root = folder_.path();
    std::filesystem::create_directories(places_.labelsFolder());
    for (const char* name : {"Quill", "Broken", "Slow", "Declined"}) writeApplication(name);
    writeLabel("quill", "Quill", "appNewVersion=\"2.0\"");
    writeLabel("broken", "Broken", "appNewVersion=$(printf '2%s' .0)");
    writeLabel("slow", "Slow", "appNewVersion=\"2.0\"");
    writeLabel("declined", "Declined", "appNewVersion=$(echo https://page/of/errors)");
    std::ofstream(places_.fragmentsPath() / "functions.sh") << "printlog() { echo \"$1\" }\n";
    std::ofstream(places_.installomatorScript()) << kTool;
    chmod(places_.installomatorScript().c_str(), 0755);
    start();
  }
  void TearDown() override { end(SIGKILL); }

  void writeApplication(const std::string& name) {
    std::string info = kInfo;
    info.replace(info.find("VERSION"), 7, "1.0");
    folder_.write("Applications/" + name + ".app/Contents/Info.plist", info);
  }
  void writeLabel(const std::string& label, const std::string& name, const std::string& version) {
    std::ofstream(places_.labelsFolder() / (label + ".sh"))
        << label << ")\n    name=\"" << name << "\"\n    type=\"zip\"\n    " << version
        << "\n    expectedTeamID=\"ABCDE12345\"\n    downloadURL=\"https://example.org\"\n    ;;\n";
  }

  void start() {
    const std::string root = folder_.path();
    const std::string home = root + "/Users/ann";
    const char* arguments[] = {CORVANE_HELPER_PROGRAM, "--root", root.c_str(), "--user-home", home.c_str(), nullptr};
    ASSERT_EQ(posix_spawn(&pid_, CORVANE_HELPER_PROGRAM, nullptr, nullptr, const_cast<char**>(arguments), environ), 0);
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(places_.helperHeartbeat()); }));
  }
  int end(int signal) {
    if (pid_ <= 0) return -1;
    kill(pid_, signal);
    int status = 0;
    waitpid(std::exchange(pid_, -1), &status, 0);
    return status;
  }

  [[nodiscard]] int connectTo() const {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    places_.helperSocket().string().copy(name.sun_path, sizeof name.sun_path - 1);
    EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
    return fd;
  }
  // Sends the bytes, ends the sending side when told to, and gives the first whole answer; absent at a hang-up.
  static std::optional<std::string> exchange(int fd, const std::string& bytes, bool halfClose = false) {
    (void)send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (halfClose) shutdown(fd, SHUT_WR);
    return receive(fd);
  }
  static std::optional<std::string> receive(int fd) {
    FrameDecoder decoder(kAnswerFrameLimit);
    char buffer[4096];
    for (;;) {
      if (auto body = decoder.next()) return body;
      const auto got = recv(fd, buffer, sizeof buffer, 0);
      if (got <= 0) return std::nullopt;
      if (!decoder.feed({buffer, static_cast<std::size_t>(got)})) return std::nullopt;
    }
  }
  [[nodiscard]] Result<JsonValue> ask(HelperQuestion question) const {
    const int fd = connectTo();
    const auto answer = exchange(fd, encodeFrame(composeRequest({.id = "t", .question = std::move(question)})));
    close(fd);
    if (!answer) return failure("test", 1, "hung up");
    return parseAnswer(*answer, "t");
  }
  [[nodiscard]] std::vector<PatchingReceipt> receipts() const {
    std::vector<PatchingReceipt> all;
    std::ifstream file(places_.receipts());
    for (std::string line; std::getline(file, line);) all.push_back(receiptFromJson(*parseJson(line)).value());
    return all;
  }
  [[nodiscard]] std::string log() const { return testing::TemporaryFolder::read(places_.logFile()); }

  testing::TemporaryFolder folder_;
  CorvaneConstants places_;
  pid_t pid_ = -1;
};

TEST_F(HelperProcess, ChecksPatchesAndVerifiesEachLabel) {
  const auto apps = appsFromJson(ask(ask::DiscoverWithUpdates{}).value()).value();
  ASSERT_EQ(apps.size(), 4U);
  const auto find = [&](const char* label) { return *std::ranges::find(apps, Label(label), &AppInfo::label); };
  EXPECT_EQ(find("quill").newVersion, "2.0");
  EXPECT_EQ(find("broken").newVersion, "2.0") << "computed by zsh";
  EXPECT_TRUE(find("declined").updateCheckFailed);
  EXPECT_EQ(find("declined").updateCheckFailureReason, "The vendor's page answered with something that is no version");

  const auto answer = patchRunAnswerFromJson(
      ask(ask::StartPatching{.labels = {Label("quill"), Label("broken"), Label("declined"), Label("nosuch")},
                             .alsoStageLabels = {}})
          .value());
  ASSERT_TRUE(answer) << answer.error().text;
  EXPECT_EQ(*answer, (PatchRunAnswer{false, "Updated 1 of 4. Failed: broken, nosuch.", 1}));
  const auto written = receipts();
  ASSERT_EQ(written.size(), 3U);
  EXPECT_EQ(written[0].status, PatchingStatus::success);
  EXPECT_EQ(written[0].version, "2.0");
  EXPECT_EQ(written[1].installomatorExitCode, -1) << "ended well, but the old version is still there";
  EXPECT_EQ(written[2].status, PatchingStatus::skipped);
  EXPECT_NE(log().find("Installomator: quill: Start"), std::string::npos);
  const auto environment = testing::TemporaryFolder::read(folder_.path() / "tool-environment");
  EXPECT_EQ(environment.find("CTEST"), std::string::npos);
  EXPECT_NE(environment.find("LANG=C.UTF-8"), std::string::npos);

  const auto again =
      patchRunAnswerFromJson(ask(ask::StartPatching{.labels = {Label("quill")}, .alsoStageLabels = {}}).value());
  EXPECT_EQ(again, (PatchRunAnswer{true, "Updated 0 of 1.", 0})) << "current, so the tool is not run";
}

TEST_F(HelperProcess, AnswersHostileFramesWithTypedErrorsAndHarmsNoOther) {
  const int good = connectTo();
  const auto codeOf = [&](const std::string& bytes, bool halfClose = false) {
    const int fd = connectTo();
    const auto answer = exchange(fd, bytes, halfClose);
    const auto parsed = answer ? parseAnswer(*answer, "t") : Result<JsonValue>(failure("test", -1, "hung up"));
    char rest = 0;
    EXPECT_LE(recv(fd, &rest, 1, 0), 0) << "the connection has ended";
    close(fd);
    return parsed ? 0 : parsed.error().code;
  };
  const auto frame = [](std::string_view body) { return encodeFrame(body); };
  const struct {
    std::string bytes;
    HelperErrorCode code;
    bool torn = false;
  } rows[] = {
      {"\xFF\xFF\xFF\xFF", HelperErrorCode::tooLarge},
      {std::string("\x00\x10\x00\x01", 4), HelperErrorCode::tooLarge},
      {frame("not json"), HelperErrorCode::malformed},
      {frame("[]"), HelperErrorCode::malformed},
      {frame(""), HelperErrorCode::malformed},
      {frame(R"({"version":2,"id":"t","op":"status"})"), HelperErrorCode::version},
      {frame(R"({"version":1,"id":"t","op":"reboot"})"), HelperErrorCode::unknownOperation},
      {frame(R"({"version":1,"id":"t","op":"status","root":"/"})"), HelperErrorCode::malformed},
      {frame(R"({"version":1,"id":7,"op":"status"})"), HelperErrorCode::malformed},
      {frame(R"({"version":1,"id":"t","op":"startPatching","labels":["a;touch x"],"alsoStageLabels":[]})"),
       HelperErrorCode::malformed},
      {frame(R"({"version":1,"id":"t","op":"startPatching","labels":"quill","alsoStageLabels":[]})"),
       HelperErrorCode::malformed},
      {frame(std::string(300, '[')), HelperErrorCode::malformed},
      {std::string("\x00\x00\x00\x20half", 8), HelperErrorCode::malformed, true},
  };
  for (const auto& row : rows)
    EXPECT_EQ(codeOf(row.bytes, row.torn), static_cast<int>(row.code)) << row.bytes.substr(0, 80);
  const auto status = exchange(good, encodeFrame(composeRequest({.id = "g", .question = ask::Status{}})));
  ASSERT_TRUE(status);
  EXPECT_EQ(statusInfoFromJson(parseAnswer(*status, "g").value())->processIdentifier, pid_);
  close(good);
}

TEST_F(HelperProcess, AnswersDuringARunAndEndsItWhenToldToStop) {
  const int run = connectTo();
  const auto request = encodeFrame(
      composeRequest({.id = "t", .question = ask::StartPatching{.labels = {Label("slow")}, .alsoStageLabels = {}}}));
  ASSERT_GT(send(run, request.data(), request.size(), 0), 0);
  ASSERT_TRUE(eventually([&] { return std::filesystem::exists(folder_.path() / "slow-started"); }));
  const auto progress = patchProgressFromJson(ask(ask::PatchingProgress{}).value());
  EXPECT_EQ(progress, (PatchProgressInfo{true, "slow", 0, 1}));
  EXPECT_TRUE(ask(ask::Status{}));
  kill(pid_, SIGTERM);
  const auto answer = receive(run);
  ASSERT_TRUE(answer);
  const auto parsed = parseAnswer(*answer, "t");
  ASSERT_FALSE(parsed);
  EXPECT_TRUE(isHelperError(parsed.error(), HelperErrorCode::stopping));
  int status = 0;
  waitpid(std::exchange(pid_, -1), &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_FALSE(std::filesystem::exists(places_.helperHeartbeat()));
  EXPECT_FALSE(std::filesystem::exists(places_.helperSocket()));
  EXPECT_TRUE(receipts().empty());
  close(run);
}

TEST_F(HelperProcess, SettlesARunThatAKillCutOff) {
  const int run = connectTo();
  const auto request = encodeFrame(
      composeRequest({.id = "t", .question = ask::StartPatching{.labels = {Label("slow")}, .alsoStageLabels = {}}}));
  ASSERT_GT(send(run, request.data(), request.size(), 0), 0);
  ASSERT_TRUE(eventually([&] { return std::filesystem::exists(folder_.path() / "slow-started"); }));
  ASSERT_TRUE(eventually([&] {
    const auto record = readFile(places_.supportFolder() / "helper-run.json");
    return record && record->find("childPid") != std::string::npos;
  }));
  end(SIGKILL);
  EXPECT_FALSE(receive(run)) << "the asker sees a hang-up";
  close(run);
  start();
  EXPECT_TRUE(eventually(
      [&] { return log().find("Ended the installer that was left running for slow.") != std::string::npos; }));
  EXPECT_FALSE(std::filesystem::exists(places_.supportFolder() / "helper-run.json"));
  EXPECT_TRUE(receipts().empty());
  EXPECT_TRUE(ask(ask::Status{}));
}

TEST_F(HelperProcess, RefusesASecondHelperAndARunWithoutItsTool) {
  const std::string root = folder_.path();
  const char* arguments[] = {CORVANE_HELPER_PROGRAM, "--root", root.c_str(), nullptr};
  pid_t second = -1;
  ASSERT_EQ(posix_spawn(&second, CORVANE_HELPER_PROGRAM, nullptr, nullptr, const_cast<char**>(arguments), environ), 0);
  int status = 0;
  waitpid(second, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_TRUE(ask(ask::Status{})) << "the first goes on";
  std::filesystem::remove(places_.installomatorScript());
  const auto refused = ask(ask::StartPatching{.labels = {Label("quill")}, .alsoStageLabels = {}});
  ASSERT_FALSE(refused);
  EXPECT_TRUE(isHelperError(refused.error(), HelperErrorCode::notReady));
}

}  // namespace
}  // namespace corvane
