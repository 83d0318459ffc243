// Tells a process from a later one with the same number.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace corvane {

// Boot and start time of the running process, as text to compare. Absent when no such process runs, when it
// has ended and only waits to be reaped, or when the process table cannot be read.
[[nodiscard]] std::optional<std::string> processStamp(pid_t pid);

}  // namespace corvane
