// What the machine's system calls itself.
#pragma once

#include <filesystem>
#include <string>

namespace corvane {

// "Version 26.1 (Build 25B78)" where the root is a Mac's, else "Debian GNU/Linux 12 (bookworm), Linux 6.1.0-18-amd64":
// for people, nothing to compare. Any thread.
[[nodiscard]] std::string systemVersion(const std::filesystem::path& root);

}  // namespace corvane
