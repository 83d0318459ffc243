// Reads a compressed archive of the tool's sources in memory: what is wanted of it, within limits. Writes nothing.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "base/error.h"

namespace corvane {

// The public sources have some 1,300 files and 3 MB, packed below 2 MB.
struct ArchiveLimits {
  std::size_t unpacked = 64U << 20U;  // bytes of the whole stream
  std::size_t entries = 20'000;
  std::size_t fileSize = 16U << 20U;
};

// By path below the archive's one outermost folder, with "/".
using ArchiveFiles = std::map<std::string, std::string>;

// The regular files of a gzip-compressed tar archive that `wanted` says yes to. Links, devices and folders are passed
// over. Fails, with a text for the log, for a torn or damaged stream, a wrong check sum, a path that is absolute or has
// an empty, "." or ".." part, a file at the top, a second outermost folder, a file twice, and what is above a limit.
// Any thread.
[[nodiscard]] Result<ArchiveFiles> readToolArchive(std::string_view bytes,
                                                   const std::function<bool(std::string_view path)>& wanted,
                                                   const ArchiveLimits& limits = {});

}  // namespace corvane
