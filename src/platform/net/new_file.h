// A file that comes to be as a whole or not at all.
#pragma once

#include <filesystem>
#include <string_view>

#include "base/error.h"

namespace corvane {

// Made anew, in place of what was there, for the owner's eyes only; gone with this object unless kept.
class NewFile {
 public:
  static Result<NewFile> create(const std::filesystem::path& path);
  ~NewFile();
  NewFile(NewFile&& other) noexcept;
  NewFile& operator=(NewFile&&) = delete;

  [[nodiscard]] Status write(std::string_view bytes);
  // All of it is in the file when this succeeds; else it goes.
  [[nodiscard]] Status keep();

 private:
  NewFile(std::filesystem::path path, int descriptor) : path_(std::move(path)), descriptor_(descriptor) {}

  std::filesystem::path path_;
  int descriptor_;  // -1 when it is no longer ours
};

}  // namespace corvane
