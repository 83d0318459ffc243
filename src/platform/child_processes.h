// Child processes with an argument vector and an environment built from nothing.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/date.h"
#include "base/error.h"
#include "base/task.h"

namespace corvane {

// In bytes, for the child and each process that it starts. Set right after the child's own start, below what the system
// allows us ourselves; what it has started in that instant keeps none.
struct ChildBounds {
  std::uint64_t memory = 0;    // of one process, mapped files included
  std::uint64_t fileSize = 0;  // of one file that is written
  friend bool operator==(const ChildBounds&, const ChildBounds&) = default;
};

struct ChildSpec {
  std::string executable;                                        // absolute path; no search, no shell
  std::vector<std::string> arguments;                            // without argv[0]
  std::vector<std::pair<std::string, std::string>> environment;  // the whole of it
  std::string folder = "/";
  std::optional<std::pair<uid_t, gid_t>> runAs;  // supplementary groups are dropped
  std::optional<Duration> timeLimit;             // then the child's process group is terminated, and killed 5 s later
  std::size_t outputLimit = 4U << 20U;           // bytes kept a stream; what is over is read and dropped
  bool detached = false;                         // a session of its own that outlives us; output goes nowhere
  bool endsGroup = false;                        // what the child left in its process group is killed when it has ended
  std::optional<ChildBounds> bounds = {};        // for a child that takes in what strangers send
};

struct ChildExit {
  int code = 0;  // 128 + signal when ended by one
  bool timedOut = false;
  std::string output;  // standard output
  std::string errors;  // standard error
};

// Ends the child's process group when it is asked to. Dying does nothing.
class ChildHandle {
 public:
  virtual ~ChildHandle() = default;
  [[nodiscard]] virtual pid_t pid() const = 0;  // 0 for a child that could not be started
  virtual void terminate() = 0;  // politely: it may clean up, and may go on; `done` then waits for the whole group
  virtual void kill() = 0;       // ends that wait too
};

// Main thread.
class ChildProcesses {
 public:
  virtual ~ChildProcesses() = default;

  // Starts a child in a process group of its own. `onLine`, when given, gets each line of standard output
  // and standard error as it comes. `done` runs once in a later turn, after both streams have ended and
  // the child was reaped; a child that cannot be started fails there too.
  virtual std::shared_ptr<ChildHandle> start(ChildSpec spec, std::function<void(std::string_view)> onLine,
                                             Completion<Result<ChildExit>> done) = 0;
};

}  // namespace corvane
