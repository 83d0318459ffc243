#include "platform/posix/posix_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
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

Result<std::string> endOf(int descriptor, const std::filesystem::path& path, std::size_t limit) {
  struct stat info {};
  if (::fstat(descriptor, &info) != 0) return failed("reading", path, errno);
  if (!S_ISREG(info.st_mode)) return failed("reading", path, S_ISDIR(info.st_mode) ? EISDIR : EINVAL);
  const auto size = static_cast<std::size_t>(info.st_size);
  std::string bytes(std::min(size, limit), '\0');
  std::size_t length = 0;
  while (length < bytes.size()) {
    const auto place = static_cast<off_t>(size - bytes.size() + length);
    const auto got = ::pread(descriptor, bytes.data() + length, bytes.size() - length, place);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return failed("reading", path, errno);
    if (got == 0) break;  // cut off meanwhile
    length += static_cast<std::size_t>(got);
  }
  bytes.resize(length);
  return bytes;
}

}  // namespace

Result<std::string> PosixFiles::read(const std::filesystem::path& path) const { return readFile(path); }

Result<std::string> PosixFiles::readEnd(const std::filesystem::path& path, std::size_t limit) const {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return failed("reading", path, errno);
  auto bytes = endOf(descriptor, path, limit);
  ::close(descriptor);
  return bytes;
}

Status PosixFiles::replace(const std::filesystem::path& path, std::string_view bytes, mode_t mode) {
  return writeFileAtomically(path, bytes, mode);
}

Status PosixFiles::append(const std::filesystem::path& path, std::string_view bytes, mode_t mode) {
  // Several users may add files to the folder: a link or a pipe that lies in wait there gets nothing.
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const int descriptor = ::open(path.c_str(), kFlags, mode);
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
