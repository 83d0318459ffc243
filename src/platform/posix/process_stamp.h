// Tells a process from a later one with the same number.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// Boot and start time of the running process, as text to compare. Absent when no such process runs, when it
// has ended and only waits to be reaped, or when the process table cannot be read.
[[nodiscard]] std::optional<std::string> processStamp(pid_t pid);

// What still runs of the session that the process `leader` with `stamp` opened, itself included, in no order. Empty
// after another boot, and when the number is another process's by now: it is given away only after the session has
// ended.
[[nodiscard]] std::vector<pid_t> processesOfSession(pid_t leader, std::string_view stamp);

}  // namespace corvane
