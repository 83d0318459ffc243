// The process table of the kernel, read as applications.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/lifeline.h"
#include "base/main_queue.h"
#include "platform/posix/file_identity.h"
#include "platform/running_applications.h"

namespace corvane {

// Which process is in front, and bringing one there. Main thread.
class WindowOrder {
 public:
  virtual ~WindowOrder() = default;
  // Absent when nothing is in front or nobody knows.
  [[nodiscard]] virtual std::optional<pid_t> activeProcess() = 0;
  // Gives whether the process has a window and the request was sent. Minimised windows come back.
  virtual bool raise(pid_t pid) = 0;
};

// Processes of other users show less: their executable is taken from their arguments where the kernel keeps
// it from us. A script counts as itself and not as its interpreter, so a bundle whose executable is a script
// is found. Threads of the kernel are left out.
class LinuxRunningApplications final : public RunningApplications {
 public:
  // `windows` may be null: nothing is in front then and nothing can be raised.
  explicit LinuxRunningApplications(MainQueue& main, std::unique_ptr<WindowOrder> windows = nullptr,
                                    std::filesystem::path processTable = "/proc");

  [[nodiscard]] std::optional<std::vector<RunningProcess>> list() const override;
  bool raise(pid_t pid) override;
  // Processes of other users, and numbers below 2, are refused.
  bool terminate(pid_t pid) override;
  bool forceTerminate(pid_t pid) override;

 private:
  struct KnownBundle {
    bool looked = false;
    std::optional<FileIdentity> info;
    std::optional<std::string> identifier;
  };
  [[nodiscard]] std::optional<std::vector<RunningProcess>> walk() const;
  [[nodiscard]] std::optional<std::string> bundleIdentifier(const std::string& bundle) const;
  [[nodiscard]] bool signalOwn(pid_t pid, int signal) const;

  MainQueue& main_;
  std::unique_ptr<WindowOrder> windows_;
  std::filesystem::path processTable_;
  mutable std::optional<std::vector<RunningProcess>> walked_;
  mutable bool walkedThisTurn_ = false;
  mutable std::unordered_map<std::string, KnownBundle> bundles_;
  Lifeline lifeline_;
};

}  // namespace corvane
