#include "core/discovery/folder_reader.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace corvane {
namespace {

// Larger than nearly every fragment and property list, so that one read takes the whole.
constexpr std::size_t kFirstRead = 32U << 10U;

// Never waits for the other end of a pipe, and takes no terminal.
constexpr int kReadFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// A rename anywhere on the machine can spoil a lookup of "..", and the kernel wants to be asked again. Nobody renames
// for ever by chance.
constexpr int kLookups = 8;

std::expected<Descriptor, int> opened(int descriptor) {
  if (descriptor < 0) return std::unexpected(errno);
  return Descriptor(descriptor);
}

std::expected<Descriptor, int> regular(std::expected<Descriptor, int> file) {
  struct stat state {};
  if (!file) return file;
  if (::fstat(file->get(), &state) != 0) return std::unexpected(errno);
  if (S_ISREG(state.st_mode)) return file;
  return std::unexpected(S_ISDIR(state.st_mode) ? EISDIR : ENOTSUP);
}

std::expected<Descriptor, int> openBeneath(int folder, const char* name, int flags) {
  open_how how{};
  how.flags = static_cast<decltype(how.flags)>(flags);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  long descriptor = -1;
  for (int tries = 0; tries < kLookups; ++tries) {
    descriptor = ::syscall(SYS_openat2, folder, name, &how, sizeof how);
    if (descriptor >= 0 || errno != EAGAIN) break;
  }
  return opened(static_cast<int>(descriptor));
}

std::string placeOf(int descriptor) {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error).native();
}

// Only names the file; even a device is not touched by that.
std::expected<Descriptor, int> namedBeneath(int folder, const char* name) {
  auto file = opened(::openat(folder, name, O_PATH | O_CLOEXEC));
  if (!file) return file;
  const auto inside = placeOf(folder);
  if (inside.empty() || !placeOf(file->get()).starts_with(inside + "/")) return std::unexpected(EXDEV);
  return file;
}

// What the call says where it does not exist or is not let through.
bool kernelCannot(int problem) { return problem == ENOSYS || problem == EPERM; }

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
  return regular(opened(::openat(folder, name, kReadFlags)));
}

std::expected<Descriptor, int> Descriptor::openFileBeneath(int folder, const char* name, BeneathBy means) {
  if (means == BeneathBy::kernel) {
    auto file = openBeneath(folder, name, kReadFlags);
    if (file || !kernelCannot(file.error())) return regular(std::move(file));
  }
  const auto file = regular(namedBeneath(folder, name));
  if (!file) return std::unexpected(file.error());
  return opened(::open(("/proc/self/fd/" + std::to_string(file->get())).c_str(), kReadFlags));
}

bool existsBeneath(int folder, const char* name, BeneathBy means) {
  // Most names lead nowhere at all, and to learn that costs less than to look for where they lead.
  if (::faccessat(folder, name, F_OK, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (means == BeneathBy::kernel) {
    const auto found = openBeneath(folder, name, O_PATH | O_CLOEXEC);
    if (found || !kernelCannot(found.error())) return found.has_value();
  }
  return namedBeneath(folder, name).has_value();
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

namespace {

std::expected<std::string_view, int> readWhole(const std::expected<Descriptor, int>& file, std::size_t limit,
                                               std::string& buffer) {
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

}  // namespace

std::expected<std::string_view, int> readFileAt(int folder, const char* name, std::size_t limit, std::string& buffer) {
  // In a folder that is trusted the kind of a file is not asked for: reading a folder fails by itself.
  return readWhole(opened(::openat(folder, name, kReadFlags)), limit, buffer);
}

std::expected<std::string_view, int> readFileBeneath(int folder, const char* name, std::size_t limit,
                                                     std::string& buffer) {
  return readWhole(Descriptor::openFileBeneath(folder, name), limit, buffer);
}

}  // namespace corvane
