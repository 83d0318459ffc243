// What tells cheaply that a file is still the one that was read. One stat, no read.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

namespace corvane {

struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  std::chrono::nanoseconds modified{};  // since 1970

  // Absent when there is no such file or it cannot be looked at.
  [[nodiscard]] static std::optional<FileIdentity> of(const std::filesystem::path& path);

  // False while the file is so young that a second change could fall into the same tick of the file
  // system's clock and leave this identity as it is: what was read then is read again next time.
  [[nodiscard]] bool settled() const;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

}  // namespace corvane
