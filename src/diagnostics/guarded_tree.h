// Taking files out of folders that others may write to. A bundle may be made by root, and what its maker alone may read
// must not come into it because somebody laid a link.
#pragma once

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// A place below a folder that is trusted: the system's root, or somebody's home. Of the base links are followed; the
// way from there is not walked through any.
struct GuardedPlace {
  std::filesystem::path base;
  std::filesystem::path relative;  // never absolute, no ".."

  // `path` lies below `base`.
  [[nodiscard]] static GuardedPlace of(const std::filesystem::path& base, const std::filesystem::path& path);
};

// The whole file where it is a regular one of one name and at most `limit` bytes; absent otherwise. Any thread.
[[nodiscard]] std::optional<std::string> readGuarded(const GuardedPlace& file, std::size_t limit);

// Copies the entries of `source` into the folder `target`: files with their times and permissions, folders whole, each
// as large as it was when it was opened. `target` is made when the source is a folder. Left out in silence, so that the
// rest comes through: links, files with a second name elsewhere, all that is no regular file, what cannot be read, what
// vanishes meanwhile, and what `wanted` refuses of the first level. An entry that is already at the target is replaced.
// Stops as soon as `cancelled` is set. Any thread.
void copyGuarded(const GuardedPlace& source, const std::filesystem::path& target, const std::atomic<bool>& cancelled,
                 const std::function<bool(std::string_view name)>& wanted = nullptr);

}  // namespace corvane
