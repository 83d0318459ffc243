#include "core/discovery/folder_reader.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace corvane {
namespace {

// Larger than nearly every fragment and property list, so that one read takes the whole.
constexpr std::size_t kFirstRead = 32U << 10U;

std::expected<Descriptor, int> opened(int descriptor) {
  if (descriptor < 0) return std::unexpected(errno);
  return Descriptor(descriptor);
}

EntryKind kindOf(int folder, const dirent& entry) {
  switch (entry.d_type) {
    case DT_REG:
      return EntryKind::file;
    case DT_DIR:
      return EntryKind::folder;
    case DT_LNK:
      return EntryKind::link;
    case DT_UNKNOWN:
      break;
    default:
      return EntryKind::other;
  }
  // Some file systems do not tell: a folder opens as one, a link does not open at all.
  const Descriptor probe(::openat(folder, entry.d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (probe.get() >= 0) return EntryKind::folder;
  return errno == ELOOP ? EntryKind::link : EntryKind::file;
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(value_, other.value_);
  return *this;
}

Descriptor::~Descriptor() {
  if (value_ >= 0) ::close(value_);
}

std::expected<Descriptor, int> Descriptor::openFolder(const std::filesystem::path& folder) {
  return openFolderAt(AT_FDCWD, folder.c_str());
}

std::expected<Descriptor, int> Descriptor::openFolderAt(int folder, const char* name) {
  return opened(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::expected<Descriptor, int> Descriptor::openFileAt(int folder, const char* name) {
  return opened(::openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

std::expected<std::vector<FolderEntry>, int> folderEntries(int folder) {
  const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (own < 0) return std::unexpected(errno);
  DIR* stream = ::fdopendir(own);
  if (stream == nullptr) {
    const int problem = errno;
    ::close(own);
    return std::unexpected(problem);
  }
  std::vector<FolderEntry> entries;
  errno = 0;
  while (const dirent* entry = ::readdir(stream)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") entries.push_back({.name = std::string(name), .kind = kindOf(folder, *entry)});
    errno = 0;
  }
  const int problem = errno;
  ::closedir(stream);
  if (problem != 0) return std::unexpected(problem);
  return entries;
}

std::expected<std::string_view, int> readFileAt(int folder, const char* name, std::size_t limit, std::string& buffer) {
  const auto file = Descriptor::openFileAt(folder, name);
  if (!file) return std::unexpected(file.error());
  if (buffer.size() < kFirstRead) buffer.resize(kFirstRead);
  std::size_t filled = 0;
  while (true) {
    if (filled == buffer.size()) buffer.resize(buffer.size() * 2);
    const auto room = buffer.size() - filled;
    const auto count = ::read(file->get(), buffer.data() + filled, room);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::unexpected(errno);
    filled += static_cast<std::size_t>(count);
    if (filled > limit) return std::unexpected(EFBIG);
    // A file gives less than was asked for at its end only; asking once more would cost as much as the first time.
    if (static_cast<std::size_t>(count) < room) return std::string_view(buffer.data(), filled);
  }
}

}  // namespace corvane
