// A temporary folder for children that are trusted less than the helper.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <utility>

#include "base/error.h"

namespace corvane {

// Owned by the helper, readable by all, with one folder inside that belongs to the children's account. Removed with
// all that is in it when the last owner dies.
class ScratchFolder {
 public:
  [[nodiscard]] static Result<ScratchFolder> create(std::optional<std::pair<uid_t, gid_t>> account);
  ScratchFolder(ScratchFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}
  ScratchFolder& operator=(ScratchFolder&& other) noexcept {
    std::swap(path_, other.path_);
    return *this;
  }
  ~ScratchFolder();

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::filesystem::path writable() const { return path_ / "home"; }

 private:
  explicit ScratchFolder(std::filesystem::path path) : path_(std::move(path)) {}
  std::filesystem::path path_;
};

}  // namespace corvane
