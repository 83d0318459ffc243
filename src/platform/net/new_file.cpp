#include "platform/net/new_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/atomic_file.h"

namespace corvane {

Result<NewFile> NewFile::create(const std::filesystem::path& path) {
  // Whatever another put there, a link to elsewhere among it, is not written to.
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) return std::unexpected(fileError("Cannot replace", path, errno));
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (descriptor < 0) return std::unexpected(fileError("Cannot make", path, errno));
  return NewFile(path, descriptor);
}

NewFile::NewFile(NewFile&& other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1)) {}

NewFile::~NewFile() {
  if (descriptor_ < 0) return;
  ::close(descriptor_);
  ::unlink(path_.c_str());
}

Status NewFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return std::unexpected(fileError("Cannot write", path_, errno));
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

Status NewFile::keep() {
  const int descriptor = std::exchange(descriptor_, -1);
  if (::close(descriptor) == 0) return {};
  const int problem = errno;
  ::unlink(path_.c_str());
  return std::unexpected(fileError("Cannot write", path_, problem));
}

}  // namespace corvane
