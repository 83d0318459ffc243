// A fresh sample Mac with its vendors' server, in a temporary folder.
#pragma once

#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <initializer_list>
#include <thread>

#include "base/plist.h"
#include "sample/files.h"
#include "sample/sample_mac.h"
#include "sample/vendors/server.h"
#include "support/test.h"

namespace corvane::sample {

struct SampleTest : testing::Test {
  struct Outcome {
    int code = -1;
    std::string output;
  };

  SampleTest() {
    auto name = (std::filesystem::temp_directory_path() / "sample.XXXXXX").string();
    root_ = ::mkdtemp(name.data());
    // The port must be known before the sample is made: a first server finds one that is free.
    makeFolder(root_ / "vendor");
    const int port = listen(0);
    server_.reset();
    std::filesystem::remove_all(root_);
    createSample({.folder = root_, .programs = SAMPLE_PROGRAMS, .port = port, .bundle = {}, .bigTree = {}});
    listen(port);
    serving_ = std::jthread([this] { server_->run(); });
  }

  ~SampleTest() override {
    if (server_) server_->stop();
    if (serving_.joinable()) serving_.join();
    std::filesystem::remove_all(root_);
  }

  int listen(int port) {
    auto server = Server::create({.sample = root_, .port = port});
    if (!server) throw MakingFailed(server.error().text);
    server_ = *std::move(server);
    return server_->port();
  }

  static std::string quoted(std::string_view word) { return "'" + replaced(std::string(word), "'", "'\\''") + "'"; }

  static Outcome shell(const std::string& line) {
    Outcome outcome;
    FILE* pipe = ::popen(("exec env -i PATH=/usr/bin:/bin " + line + " 2>&1").c_str(), "r");
    char buffer[4096];
    for (std::size_t count; (count = ::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
      outcome.output.append(buffer, count);
    const int status = ::pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
  }

  Outcome install(std::string_view label, std::initializer_list<std::string_view> arguments = {"DEBUG=0"}) const {
    auto line = quoted((support() / "Installomator.sh").string()) + " " + quoted(label);
    for (const auto argument : arguments) line += " " + quoted(argument);
    return shell(line);
  }

  std::filesystem::path support() const { return root_ / "Library/Application Support/Corvane"; }

  std::string plistText(const std::filesystem::path& file, std::string_view key) const {
    const auto document = parsePlist(take(root_ / file));
    if (!document || document->root.dict() == nullptr) return "unreadable";
    const auto found = document->root.dict()->find(key);
    return found == document->root.dict()->end() ? "absent" : std::string(found->second.string().value_or("no text"));
  }

  std::string version(const std::string& bundle, std::string_view key = "CFBundleShortVersionString") const {
    return plistText("Applications/" + bundle + "/Contents/Info.plist", key);
  }

  pid_t open(const std::string& name) const {
    const auto executable = (root_ / "Applications" / (name + ".app") / "Contents/MacOS" / name).string();
    char* arguments[] = {const_cast<char*>(executable.c_str()), nullptr};
    char* environment[] = {nullptr};
    pid_t pid = -1;
    EXPECT_EQ(::posix_spawn(&pid, executable.c_str(), nullptr, nullptr, arguments, environment), 0);
    return pid;
  }

  static bool stillRuns(pid_t pid) {
    int status = 0;
    if (::waitpid(pid, &status, WNOHANG) == pid) return false;
    ::kill(pid, SIGKILL);
    ::waitpid(pid, &status, 0);
    return true;
  }

  std::filesystem::path root_;
  std::unique_ptr<Server> server_;
  std::jthread serving_;
};

}  // namespace corvane::sample
