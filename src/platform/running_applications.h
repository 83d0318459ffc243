// The processes of the machine as applications.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace corvane {

struct RunningProcess {
  pid_t pid = 0;
  uid_t uid = 0;
  std::string executable;                       // absolute path
  std::optional<std::string> bundlePath;        // the outermost "*.app" that holds the executable
  std::optional<std::string> bundleIdentifier;  // from that bundle's Info.plist
  bool active = false;                          // in front for the user

  // Last component of `executable`.
  [[nodiscard]] std::string name() const { return executable.substr(executable.rfind('/') + 1); }
};

// Main thread. Answers at once; one walk of the process table serves a whole turn.
class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  // Absent when the process table cannot be read, which never means that nothing runs.
  [[nodiscard]] virtual std::optional<std::vector<RunningProcess>> list() const = 0;

  // Each gives whether the request could be made; none waits for its effect.
  virtual bool raise(pid_t pid) = 0;
  virtual bool terminate(pid_t pid) = 0;
  virtual bool forceTerminate(pid_t pid) = 0;
};

}  // namespace corvane
