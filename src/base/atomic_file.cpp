#include "base/atomic_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace corvane {
namespace {

namespace fs = std::filesystem;

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  [[nodiscard]] int get() const { return fd_; }
  [[nodiscard]] bool open() const { return fd_ >= 0; }
  // Gives 0 or errno; a network file system may tell only here that the bytes were lost.
  int close() { return ::close(std::exchange(fd_, -1)) == 0 ? 0 : errno; }

 private:
  int fd_;
};

// A temporary file that is taken away unless it was kept.
class TemporaryFile {
 public:
  explicit TemporaryFile(const fs::path& target)
      : name_((target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string()),
        fd_(::mkostemp(name_.data(), O_CLOEXEC)),
        error_(fd_.open() ? 0 : errno),
        present_(fd_.open()) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (present_) ::unlink(name_.c_str());
  }

  // Each gives 0 or errno; `fill` that of making the file too.
  int fill(std::string_view bytes, mode_t mode) {
    if (error_ != 0) return error_;
    while (!bytes.empty()) {
      const auto written = ::write(fd_.get(), bytes.data(), bytes.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return errno;
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    if (::fchmod(fd_.get(), mode) != 0 || ::fsync(fd_.get()) != 0) return errno;
    return fd_.close();
  }
  int renameTo(const fs::path& target) {
    if (::rename(name_.c_str(), target.c_str()) != 0) return errno;
    present_ = false;
    return 0;
  }

 private:
  std::string name_;
  Descriptor fd_;
  int error_;
  bool present_;
};

fs::path folderOf(const fs::path& path) { return path.has_parent_path() ? path.parent_path() : fs::path("."); }

int syncFolder(const fs::path& folder) {
  const Descriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A folder that we may write to but not read, such as a drop box, cannot be synced.
  if (!fd.open()) return errno == EACCES ? 0 : errno;
  // Some file systems know no sync of a folder; their renames are as durable as they get.
  if (::fsync(fd.get()) != 0 && errno != EINVAL) return errno;
  return 0;
}

Result<std::string> readAll(int fd, const fs::path& path, std::size_t limit, std::size_t expected) {
  std::string bytes;
  // Room for the read that finds the end too: growing a large text for it would copy all of it.
  bytes.reserve(expected + 2 * std::size_t{4096});
  std::size_t length = 0;
  while (true) {
    // One byte more than is expected, so that the usual file ends with the second read.
    const std::size_t room = std::max<std::size_t>(expected > length ? expected - length + 1 : 0, 4096);
    ssize_t got = 0;
    // Not `resize`, which would write every byte once before it is read.
    bytes.resize_and_overwrite(length + room, [&](char* data, std::size_t) {
      got = ::read(fd, data + length, room);
      return length + static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    });
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::unexpected(fileError("Could not read", path, errno));
    if (got == 0) break;
    length += static_cast<std::size_t>(got);
    if (length > limit) return std::unexpected(fileError("Could not read", path, EFBIG));
  }
  bytes.resize(length);
  return bytes;
}

}  // namespace

Error fileError(std::string_view doing, const fs::path& path, int errnoValue) {
  return {.domain = "CRVFiles",
          .code = errnoValue,
          .text = fmt::format("{} {}: {}", doing, path.string(), std::generic_category().message(errnoValue))};
}

Status writeFileAtomically(const fs::path& path, std::string_view bytes, mode_t mode) {
  const auto failed = [&path](int code) { return std::unexpected(fileError("Could not write", path, code)); };
  TemporaryFile temporary(folderOf(path) / path.filename());
  if (const int code = temporary.fill(bytes, mode)) return failed(code);
  if (const int code = temporary.renameTo(path)) return failed(code);
  if (const int code = syncFolder(folderOf(path))) return failed(code);
  return {};
}

Result<std::string> readFile(const fs::path& path, std::size_t limit) {
  // Without waiting for a writer, should somebody have put a pipe there.
  const Descriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!fd.open()) return std::unexpected(fileError("Could not read", path, errno));
  struct stat info {};
  if (::fstat(fd.get(), &info) != 0) return std::unexpected(fileError("Could not read", path, errno));
  if (S_ISDIR(info.st_mode)) return std::unexpected(fileError("Could not read", path, EISDIR));
  if (!S_ISREG(info.st_mode)) return std::unexpected(fileError("Could not read", path, EINVAL));
  const auto size = static_cast<std::size_t>(info.st_size);
  if (size > limit) return std::unexpected(fileError("Could not read", path, EFBIG));
  return readAll(fd.get(), path, limit, size);
}

}  // namespace corvane
