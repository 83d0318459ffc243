// Which process answers behind a Unix-domain socket. Sends nothing.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

namespace corvane {

// The process of this user that listens on the socket; absent when nobody does, or somebody else. Never waits. The
// path may be longer than the kernel takes in an address.
[[nodiscard]] std::optional<pid_t> listeningProcess(const std::filesystem::path& socket);

}  // namespace corvane
