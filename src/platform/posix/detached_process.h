// Starts a program that goes on without us.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "base/error.h"

namespace corvane {

struct DetachedProgram {
  std::filesystem::path executable;                              // absolute
  std::vector<std::string> arguments;                            // without argv[0]
  std::vector<std::pair<std::string, std::string>> environment;  // the whole of it
};

// In a session of its own, not our child, in the folder "/", all three streams on /dev/null, default signals, umask
// 022. Waits until the program was loaded, which takes milliseconds; fails in the domain "CRVDetachedProcess" with
// errno when it could not be.
[[nodiscard]] Result<pid_t> startDetached(const DetachedProgram& program);

}  // namespace corvane
