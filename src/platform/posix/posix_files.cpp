#include "platform/posix/posix_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "base/atomic_file.h"
#include "platform/posix/file_identity.h"

namespace corvane {

namespace {

std::unexpected<Error> failed(std::string_view doing, const std::filesystem::path& path, int errnoValue) {
  return std::unexpected(fileError(doing, path, errnoValue));
}

Status writeOnce(int descriptor, std::string_view bytes, const std::filesystem::path& path) {
  ssize_t written = 0;
  do {
    written = ::write(descriptor, bytes.data(), bytes.size());
  } while (written < 0 && errno == EINTR);
  if (written < 0) return failed("appending to", path, errno);
  // Only a full disk cuts a write to a regular file short.
  if (static_cast<std::size_t>(written) != bytes.size()) return failed("appending to", path, ENOSPC);
  return {};
}

}  // namespace

Result<std::string> PosixFiles::read(const std::filesystem::path& path) const { return readFile(path); }

Status PosixFiles::replace(const std::filesystem::path& path, std::string_view bytes, mode_t mode) {
  return writeFileAtomically(path, bytes, mode);
}

Status PosixFiles::append(const std::filesystem::path& path, std::string_view bytes, mode_t mode) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, mode);
  if (descriptor < 0) return failed("opening", path, errno);
  auto status = writeOnce(descriptor, bytes, path);
  ::close(descriptor);
  return status;
}

Status PosixFiles::sync(const std::filesystem::path& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return failed("opening", path, errno);
  const int error = ::fsync(descriptor) == 0 ? 0 : errno;
  ::close(descriptor);
  if (error != 0) return failed("syncing", path, error);
  return {};
}

Status PosixFiles::makeFolders(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) return failed("making the folder", folder, error.value());
  if (!std::filesystem::is_directory(folder, error)) return failed("making the folder", folder, ENOTDIR);
  return {};
}

Status PosixFiles::rename(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (std::rename(from.c_str(), to.c_str()) != 0) return failed("renaming", from, errno);
  return {};
}

Status PosixFiles::remove(const std::filesystem::path& path) {
  if (::unlink(path.c_str()) != 0) return failed("removing", path, errno);
  return {};
}

bool PosixFiles::exists(const std::filesystem::path& path) const { return FileIdentity::of(path).has_value(); }

std::optional<Date> PosixFiles::modified(const std::filesystem::path& path) const {
  const auto identity = FileIdentity::of(path);
  if (!identity) return std::nullopt;
  return Date(std::chrono::floor<Duration>(identity->modified));
}

std::optional<std::uint64_t> PosixFiles::size(const std::filesystem::path& path) const {
  const auto identity = FileIdentity::of(path);
  if (!identity) return std::nullopt;
  return static_cast<std::uint64_t>(identity->size);
}

}  // namespace corvane
