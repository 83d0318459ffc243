// Small files of the machine, over base's atomic files.
#pragma once

#include "platform/files.h"

namespace corvane {

// Errors carry errno as their code. Modes are narrowed by the process's umask; folders are asked for with 0777.
class PosixFiles final : public Files {
 public:
  [[nodiscard]] Result<std::string> read(const std::filesystem::path& path) const override;
  [[nodiscard]] Result<std::string> readEnd(const std::filesystem::path& path, std::size_t limit) const override;
  [[nodiscard]] Status replace(const std::filesystem::path& path, std::string_view bytes, mode_t mode) override;
  [[nodiscard]] Status append(const std::filesystem::path& path, std::string_view bytes, mode_t mode) override;
  [[nodiscard]] Status sync(const std::filesystem::path& path) override;
  [[nodiscard]] Status makeFolders(const std::filesystem::path& folder) override;
  [[nodiscard]] Status rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  [[nodiscard]] Status remove(const std::filesystem::path& path) override;
  [[nodiscard]] bool exists(const std::filesystem::path& path) const override;
  [[nodiscard]] std::optional<Date> modified(const std::filesystem::path& path) const override;
  [[nodiscard]] std::optional<std::uint64_t> size(const std::filesystem::path& path) const override;
};

}  // namespace corvane
