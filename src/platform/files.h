// Small files: state, locks' neighbours, logs. Bundle and label scans read the tree directly instead.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/date.h"
#include "base/error.h"

namespace corvane {

// Any thread. The real adapter is base's atomic files; the scripted one fails to order.
class Files {
 public:
  virtual ~Files() = default;
  [[nodiscard]] virtual Result<std::string> read(const std::filesystem::path& path) const = 0;
  // The last `limit` bytes, or all of a shorter file.
  [[nodiscard]] virtual Result<std::string> readEnd(const std::filesystem::path& path, std::size_t limit) const {
    auto bytes = read(path);
    if (bytes && bytes->size() > limit) bytes->erase(0, bytes->size() - limit);
    return bytes;
  }
  [[nodiscard]] virtual Status replace(const std::filesystem::path& path, std::string_view bytes, mode_t mode) = 0;
  // Appends in one write to a file opened for appending, which is made when missing; its folder is not.
  [[nodiscard]] virtual Status append(const std::filesystem::path& path, std::string_view bytes, mode_t mode) = 0;
  // What was appended is on disk when this returns. A double has nothing that could be lost.
  [[nodiscard]] virtual Status sync(const std::filesystem::path&) { return {}; }
  [[nodiscard]] virtual Status makeFolders(const std::filesystem::path& folder) = 0;
  [[nodiscard]] virtual Status rename(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
  [[nodiscard]] virtual Status remove(const std::filesystem::path& path) = 0;
  [[nodiscard]] virtual bool exists(const std::filesystem::path& path) const = 0;
  [[nodiscard]] virtual std::optional<Date> modified(const std::filesystem::path& path) const = 0;
  [[nodiscard]] virtual std::optional<std::uint64_t> size(const std::filesystem::path& path) const = 0;
};

}  // namespace corvane
