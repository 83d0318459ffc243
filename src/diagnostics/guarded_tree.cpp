#include "diagnostics/guarded_tree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "core/discovery/folder_reader.h"
#include "diagnostics/descriptor_bytes.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr int kDeepest = 32;  // folders below one another; each holds two descriptors while it is copied
constexpr mode_t kOwnersOnly = 0700;

// Waits for nobody behind a pipe, takes no terminal, follows no link.
constexpr int kGuardedFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

Descriptor openFolder(int folder, const char* name) {
  return Descriptor(::openat(folder, name, kGuardedFlags | O_DIRECTORY));
}

Descriptor openFolder(const GuardedPlace& place) {
  Descriptor folder(::open(place.base.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (const auto& name : place.relative) {
    if (folder.get() < 0) break;
    folder = openFolder(folder.get(), name.c_str());
  }
  return folder;
}

struct OpenFile {
  Descriptor descriptor;
  struct stat state {};
};

// A second name of a file may be a stranger's to a file that is not the stranger's.
std::optional<OpenFile> openFile(int folder, const char* name) {
  OpenFile file{.descriptor = Descriptor(::openat(folder, name, kGuardedFlags))};
  if (file.descriptor.get() < 0 || ::fstat(file.descriptor.get(), &file.state) != 0) return std::nullopt;
  if (!S_ISREG(file.state.st_mode) || file.state.st_nlink > 1) return std::nullopt;
  return file;
}

class Copier {
 public:
  explicit Copier(const std::atomic<bool>& cancelled) : cancelled_(cancelled) {}

  void copyEntries(int from, int to, const std::function<bool(std::string_view)>& wanted, int depth) {
    const auto entries = folderEntries(from);
    if (!entries) return;
    for (const auto& entry : *entries) {
      if (cancelled_) return;
      if (wanted && !wanted(entry.name)) continue;
      if (entry.kind == EntryKind::file) copyFile(from, to, entry.name.c_str());
      if (entry.kind == EntryKind::folder && depth < kDeepest) copyFolder(from, to, entry.name.c_str(), depth);
    }
  }

 private:
  void copyFolder(int from, int to, const char* name, int depth) {
    const auto source = openFolder(from, name);
    if (source.get() < 0 || ::mkdirat(to, name, kOwnersOnly) != 0) return;
    const auto target = openFolder(to, name);
    if (target.get() >= 0) copyEntries(source.get(), target.get(), nullptr, depth + 1);
  }

  void copyFile(int from, int to, const char* name) {
    const auto source = openFile(from, name);
    if (!source) return;
    ::unlinkat(to, name, 0);
    const auto mode = (source->state.st_mode & 0777U) | S_IRUSR | S_IWUSR;
    const Descriptor target(::openat(to, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (target.get() < 0) return;
    buffer_.resize(kCopyPiece);
    // What is written to a log meanwhile stays out, or a busy one would never end.
    auto left = static_cast<std::size_t>(source->state.st_size);
    while (left > 0 && !cancelled_) {
      const auto got = readUpTo(source->descriptor.get(), buffer_.data(), std::min(left, kCopyPiece));
      if (got.value_or(0) == 0 || !writeAll(target.get(), {buffer_.data(), *got})) break;
      left -= *got;
    }
    const timespec times[] = {source->state.st_atim, source->state.st_mtim};
    ::futimens(target.get(), times);
  }

  const std::atomic<bool>& cancelled_;
  std::string buffer_;
};

}  // namespace

GuardedPlace GuardedPlace::of(const fs::path& base, const fs::path& path) {
  return {.base = base, .relative = path.lexically_relative(base)};
}

std::optional<std::string> readGuarded(const GuardedPlace& place, std::size_t limit) {
  const auto folder = openFolder({.base = place.base, .relative = place.relative.parent_path()});
  const auto file = folder.get() < 0 ? std::nullopt : openFile(folder.get(), place.relative.filename().c_str());
  if (!file || static_cast<std::size_t>(file->state.st_size) > limit) return std::nullopt;
  std::string bytes(static_cast<std::size_t>(file->state.st_size), '\0');
  const auto got = readUpTo(file->descriptor.get(), bytes.data(), bytes.size());
  if (!got) return std::nullopt;
  bytes.resize(*got);
  return bytes;
}

void copyGuarded(const GuardedPlace& source, const fs::path& target, const std::atomic<bool>& cancelled,
                 const std::function<bool(std::string_view)>& wanted) {
  const auto from = openFolder(source);
  // One that is there but not for us shows as an empty folder.
  if (from.get() < 0 && errno != EACCES) return;
  std::error_code ignored;
  fs::create_directories(target, ignored);
  const Descriptor to(::open(target.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (from.get() >= 0 && to.get() >= 0) Copier(cancelled).copyEntries(from.get(), to.get(), wanted, 0);
}

}  // namespace corvane
