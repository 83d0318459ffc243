// The one way to write a state file, and how small files are read.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "base/error.h"

namespace corvane {

// Writes all bytes to a temporary file in the same folder, syncs it, renames it over `path` and syncs the
// folder. On any failure the old file stands as it was and no temporary file is left. Creates no folders.
[[nodiscard]] Status writeFileAtomically(const std::filesystem::path& path, std::string_view bytes, mode_t mode = 0644);

// The whole file. Fails with ENOENT as its code when there is none; refuses files above `limit` bytes.
[[nodiscard]] Result<std::string> readFile(const std::filesystem::path& path, std::size_t limit = 256U << 20U);

// "<doing> <path>: <what errno says>" with errno as code, in the domain "CRVFiles".
[[nodiscard]] Error fileError(std::string_view doing, const std::filesystem::path& path, int errnoValue);

}  // namespace corvane
