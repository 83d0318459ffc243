#include "platform/linux/linux_running_applications.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "base/atomic_file.h"
#include "base/plist.h"
#include "platform/linux/process_table.h"

namespace corvane {

namespace {

constexpr std::size_t kInfoLimit = 4U << 20U;  // an Info.plist is some kilobytes; what is larger is not read

std::optional<pid_t> processNumber(const std::filesystem::path& folder) {
  const auto name = folder.filename().string();
  pid_t pid = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
  if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
  return pid;
}

std::optional<std::string> readIdentifier(const std::filesystem::path& info) {
  const auto bytes = readFile(info, kInfoLimit);
  if (!bytes) return std::nullopt;
  const auto document = parsePlist(*bytes);
  if (!document || document->root.dict() == nullptr) return std::nullopt;
  const auto found = document->root.dict()->find("CFBundleIdentifier");
  if (found == document->root.dict()->end() || !found->second.string()) return std::nullopt;
  return std::string(*found->second.string());
}

}  // namespace

LinuxRunningApplications::LinuxRunningApplications(MainQueue& main, std::unique_ptr<WindowOrder> windows,
                                                   std::filesystem::path processTable)
    : main_(main), windows_(std::move(windows)), processTable_(std::move(processTable)) {}

std::optional<std::vector<RunningProcess>> LinuxRunningApplications::list() const {
  if (!std::exchange(walkedThisTurn_, true)) {
    walked_ = walk();
    main_.post(lifeline_.guard([this] { walkedThisTurn_ = false; }));
  }
  return walked_;
}

std::optional<std::vector<RunningProcess>> LinuxRunningApplications::walk() const {
  std::error_code error;
  std::filesystem::directory_iterator entries(processTable_, error);
  if (error) return std::nullopt;
  const auto active = windows_ ? windows_->activeProcess() : std::nullopt;
  std::vector<RunningProcess> processes;
  for (; entries != std::filesystem::directory_iterator(); entries.increment(error)) {
    const auto pid = processNumber(entries->path());
    if (!pid) continue;
    auto process = readProcess(entries->path(), *pid);
    if (!process) continue;
    process->active = active == *pid;
    if (process->bundlePath) process->bundleIdentifier = bundleIdentifier(*process->bundlePath);
    processes.push_back(std::move(*process));
  }
  // A table in which not even we stand is a mounted-over or hidden one.
  if (error || processes.empty()) return std::nullopt;
  std::ranges::sort(processes, {}, &RunningProcess::pid);
  return processes;
}

std::optional<std::string> LinuxRunningApplications::bundleIdentifier(const std::string& bundle) const {
  const auto path = std::filesystem::path(bundle) / "Contents/Info.plist";
  const auto identity = FileIdentity::of(path);
  auto& known = bundles_[bundle];
  if (!known.looked || known.info != identity) {
    known = {.looked = true, .info = identity, .identifier = identity ? readIdentifier(path) : std::nullopt};
  }
  return known.identifier;
}

bool LinuxRunningApplications::raise(pid_t pid) { return windows_ && windows_->raise(pid); }
bool LinuxRunningApplications::terminate(pid_t pid) { return signalOwn(pid, SIGTERM); }
bool LinuxRunningApplications::forceTerminate(pid_t pid) { return signalOwn(pid, SIGKILL); }

bool LinuxRunningApplications::signalOwn(pid_t pid, int signal) const {
  struct stat found {};
  if (pid < 2 || ::stat((processTable_ / std::to_string(pid)).c_str(), &found) != 0) return false;
  return found.st_uid == ::geteuid() && ::kill(pid, signal) == 0;
}

}  // namespace corvane
