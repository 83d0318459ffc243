#include "platform/scripted/scripted_running_applications.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace corvane {

namespace {

constexpr uid_t kPersonUid = 501;  // the first account of a Mac

}  // namespace

void ScriptedRunningApplications::add(RunningProcess process) { processes_.push_back(std::move(process)); }

pid_t ScriptedRunningApplications::open(const std::string& bundlePath, std::optional<std::string> bundleIdentifier) {
  const auto name = std::filesystem::path(bundlePath).stem().string();
  add({.pid = nextPid_,
       .uid = kPersonUid,
       .executable = bundlePath + "/Contents/MacOS/" + name,
       .bundlePath = bundlePath,
       .bundleIdentifier = std::move(bundleIdentifier)});
  return nextPid_++;
}

void ScriptedRunningApplications::end(pid_t pid) {
  std::erase_if(processes_, [&](const RunningProcess& process) { return process.pid == pid; });
}

bool ScriptedRunningApplications::runs(pid_t pid) const {
  return std::ranges::find(processes_, pid, &RunningProcess::pid) != processes_.end();
}

std::optional<std::vector<RunningProcess>> ScriptedRunningApplications::list() const {
  if (!readable_) return std::nullopt;
  return processes_;
}

bool ScriptedRunningApplications::raise(pid_t pid) {
  raised_.push_back(pid);
  if (!runs(pid)) return false;
  for (auto& process : processes_) process.active = process.pid == pid;
  return true;
}

bool ScriptedRunningApplications::terminate(pid_t pid) {
  terminated_.push_back(pid);
  if (!runs(pid)) return false;
  if (!stubborn_.contains(pid)) end(pid);
  return true;
}

bool ScriptedRunningApplications::forceTerminate(pid_t pid) {
  forced_.push_back(pid);
  if (!runs(pid)) return false;
  end(pid);
  return true;
}

}  // namespace corvane
