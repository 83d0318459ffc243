// A process table to set.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <vector>

#include "platform/running_applications.h"

namespace corvane {

// A process that is asked to end does so at once, unless it is stubborn; a forced one always does.
class ScriptedRunningApplications final : public RunningApplications {
 public:
  void set(std::vector<RunningProcess> processes) { processes_ = std::move(processes); }
  void add(RunningProcess process);
  // Opens a bundle: an executable named like it inside, with a fresh number. Gives the number.
  pid_t open(const std::string& bundlePath, std::optional<std::string> bundleIdentifier = std::nullopt);
  void end(pid_t pid);
  void setStubborn(pid_t pid) { stubborn_.insert(pid); }
  void setReadable(bool readable) { readable_ = readable; }

  // What was asked, in order. Answers to raise do not depend on it: any running process comes to the front.
  [[nodiscard]] const std::vector<pid_t>& raised() const { return raised_; }
  [[nodiscard]] const std::vector<pid_t>& terminated() const { return terminated_; }
  [[nodiscard]] const std::vector<pid_t>& forced() const { return forced_; }

  [[nodiscard]] std::optional<std::vector<RunningProcess>> list() const override;
  bool raise(pid_t pid) override;
  bool terminate(pid_t pid) override;
  bool forceTerminate(pid_t pid) override;

 private:
  [[nodiscard]] bool runs(pid_t pid) const;

  std::vector<RunningProcess> processes_;
  std::set<pid_t> stubborn_;
  std::vector<pid_t> raised_;
  std::vector<pid_t> terminated_;
  std::vector<pid_t> forced_;
  pid_t nextPid_ = 5000;
  bool readable_ = true;
};

}  // namespace corvane
