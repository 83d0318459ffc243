// One process as the kernel's process file system tells it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/running_applications.h"

namespace corvane {

// The process behind `folder` ("/proc/123"), without what needs a bundle's files or the desktop. Absent for
// threads of the kernel, for ended processes and where no absolute executable can be told.
[[nodiscard]] std::optional<RunningProcess> readProcess(const std::filesystem::path& folder, pid_t pid);

// The file that `arguments` make `executable` run, when that is an interpreter and the first argument that is
// no option is an absolute path which lies inside a bundle or is an existing file.
[[nodiscard]] std::optional<std::string> interpretedScript(const std::string& executable,
                                                           const std::vector<std::string>& arguments);

}  // namespace corvane
