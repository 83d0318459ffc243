// The real daemon as a child process, on a small tree of its own.
#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "base/atomic_file.h"
#include "base/frame.h"
#include "core/client/helper_messages.h"
#include "core/places.h"
#include "core/records/history_records.h"
#include "support/started_program.h"
#include "support/temporary_folder.h"
#include "support/test.h"
#include "support/unix_socket.h"

namespace corvane {

inline constexpr const char* kInfo = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleShortVersionString</key><string>VERSION</string>
<key>CFBundleIdentifier</key><string>org.example.quill</string></dict></plist>
)";

// Installs by writing the version into the bundle; "slow" waits to be killed.
inline constexpr const char* kTool = R"(#!/bin/sh
root="${0%/Library/*}"
echo "2026-11-22 21:04:42 : REQ   : $1 : Start"
case "$1" in
  quill) sed -i "s/>1.0</>2.0</" "$root/Applications/Quill.app/Contents/Info.plist" ;;
  slow) touch "$root/slow-started"; exec sleep 600 ;;
esac
env > "$root/tool-environment";
)";

struct HelperProcess : ::testing::Test {
  void SetUp() override {
    chmod(folder_.path().c_str(), 0755);
    places_.root = folder_.path();
    places_.home = folder_.path() / "Users/ann";
    std::filesystem::create_directories(places_.labelsFolder());
    for (const char* name : {"Quill", "Slow"}) writeApplication(name);
    writeLabel("quill", "Quill", "appNewVersion=\"2.0\"");
    writeLabel("slow", "Slow", "appNewVersion=\"2.0\"");
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
    const std::string home = places_.home.string();
    const char* arguments[] = {CORVANE_HELPER_PROGRAM, "--root", root.c_str(), "--user-home", home.c_str(), nullptr};
    ASSERT_EQ(posix_spawn(&pid_, CORVANE_HELPER_PROGRAM, nullptr, nullptr, const_cast<char**>(arguments), environ), 0);
    ASSERT_TRUE(testing::eventually([&] { return std::filesystem::exists(places_.helperHeartbeat()); }));
  }
  int end(int signal) {
    if (pid_ <= 0) return -1;
    kill(pid_, signal);
    int status = 0;
    waitpid(std::exchange(pid_, -1), &status, 0);
    return status;
  }

  [[nodiscard]] int connectTo() const {
    const int fd = testing::unixSocket(places_.helperSocket(), ::connect);
    EXPECT_GE(fd, 0);
    return fd;
  }
  // Sends the bytes, ends the sending side when told to, and gives the first whole answer; absent at a hang-up.
  static std::optional<std::string> exchange(int fd, const std::string& bytes, bool halfClose = false) {
    (void)send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (halfClose) shutdown(fd, SHUT_WR);
    return receive(fd);
  }
  // One frame and not a byte of the next, for answers may come in one piece.
  static std::optional<std::string> receive(int fd) {
    unsigned char header[kFrameHeaderBytes];
    if (recv(fd, header, sizeof header, MSG_WAITALL) != static_cast<ssize_t>(sizeof header)) return std::nullopt;
    std::size_t size = 0;
    for (const unsigned char byte : header) size = size << 8U | byte;
    if (size > kAnswerFrameLimit) return std::nullopt;
    std::string body(size, '\0');
    if (recv(fd, body.data(), size, MSG_WAITALL) != static_cast<ssize_t>(size)) return std::nullopt;
    return body;
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

}  // namespace corvane
