// Bytes from and to open files, whatever a signal cuts short.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string_view>

namespace corvane {

inline constexpr std::size_t kCopyPiece = 1U << 20U;  // bytes between two looks at whether a copy is still wanted

// How many came: fewer than `wanted` at the end of the file alone. Absent on a failure.
[[nodiscard]] inline std::optional<std::size_t> readUpTo(int file, char* bytes, std::size_t wanted) {
  std::size_t filled = 0;
  while (filled < wanted) {
    const auto got = ::read(file, bytes + filled, wanted - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  return filled;
}

// Whether all of them were taken.
[[nodiscard]] inline bool writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace corvane
