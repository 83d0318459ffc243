#include "platform/posix/posix_preference_domains.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <utility>

#include "base/atomic_file.h"

namespace corvane {

namespace {

constexpr mode_t kNewFileMode = 0600;
constexpr mode_t kNewFolderMode = 0700;

// Held over read, change and write by whoever changes the file; each holder opens it for himself, so that it
// keeps threads apart as well as processes.
class ChangeLock {
 public:
  [[nodiscard]] static Result<ChangeLock> on(const std::filesystem::path& file) {
    const auto path = file.parent_path() / ("." + file.filename().string() + ".lock");
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kNewFileMode);
    if (descriptor < 0) return std::unexpected(fileError("opening the lock", path, errno));
    ChangeLock lock(descriptor);
    while (::flock(descriptor, LOCK_EX) != 0)
      if (errno != EINTR) return std::unexpected(fileError("locking", path, errno));
    return lock;
  }
  ChangeLock(ChangeLock&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  ChangeLock& operator=(ChangeLock&&) = delete;
  ~ChangeLock() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

 private:
  explicit ChangeLock(int descriptor) : descriptor_(descriptor) {}
  int descriptor_;
};

Status makeFolder(const std::filesystem::path& folder) {
  std::error_code error;
  if (std::filesystem::is_directory(folder, error)) return {};
  std::filesystem::create_directories(folder.parent_path(), error);
  if (::mkdir(folder.c_str(), kNewFolderMode) != 0 && errno != EEXIST)
    return std::unexpected(fileError("making the folder", folder, errno));
  return {};
}

mode_t modeOf(const std::filesystem::path& path) {
  struct stat found {};
  return ::stat(path.c_str(), &found) == 0 ? found.st_mode & 07777U : kNewFileMode;
}

// Several damaged files of one second get numbers behind the date.
Status setAside(const std::filesystem::path& path) {
  const auto now = std::chrono::time_point_cast<Duration>(std::chrono::system_clock::now());
  const auto base = path.string() + ".damaged-" + iso8601Utc(Date(std::chrono::floor<std::chrono::seconds>(now)));
  auto target = base;
  for (int number = 2; ::access(target.c_str(), F_OK) == 0; ++number) target = base + "-" + std::to_string(number);
  if (std::rename(path.c_str(), target.c_str()) != 0) return std::unexpected(fileError("setting aside", path, errno));
  return {};
}

}  // namespace

PosixPreferenceDomains::PosixPreferenceDomains(Paths paths, std::function<void(std::string_view)> log,
                                               FolderWatch watchFolder)
    : log_(std::move(log)), watchFolder_(std::move(watchFolder)) {
  user_.path = std::move(paths.user);
  managed_.path = std::move(paths.managed);
}

PosixPreferenceDomains::Loaded PosixPreferenceDomains::load(const std::filesystem::path& path) {
  Loaded loaded;
  const auto bytes = readFile(path);
  if (!bytes) {
    if (bytes.error().code == ENOENT || bytes.error().code == ENOTDIR) return loaded;
    loaded.trouble = bytes.error().text;
    loaded.unreadable = bytes.error();
    return loaded;
  }
  const auto document = parsePlist(*bytes);
  if (document && document->root.dict() != nullptr) {
    loaded.values = *document->root.dict();
    loaded.format = document->format;
    return loaded;
  }
  loaded.damaged = true;
  loaded.trouble = path.string() + " is damaged and counts as empty: " +
                   (document ? std::string("it holds no dictionary") : document.error().text);
  return loaded;
}

DomainSnapshot PosixPreferenceDomains::user() const { return refresh(user_); }
DomainSnapshot PosixPreferenceDomains::managed() const { return refresh(managed_); }

DomainSnapshot PosixPreferenceDomains::refresh(File& file) const {
  std::string trouble;
  DomainSnapshot snapshot;
  {
    const std::lock_guard lock(mutex_);
    const auto identity = FileIdentity::of(file.path);
    if (file.trusted && identity == file.identity) return file.snapshot;
    // Judged before the read: a file that changes while it is read has another identity next time.
    const bool sameFile = file.snapshot.values && identity == file.identity;
    const bool settled = !identity || identity->settled();
    auto loaded = load(file.path);
    if (!sameFile) trouble = std::move(loaded.trouble);
    adopt(file, std::move(loaded.values));
    file.identity = identity;
    file.trusted = settled;
    snapshot = file.snapshot;
  }
  if (!trouble.empty() && log_) log_(trouble);
  return snapshot;
}

void PosixPreferenceDomains::adopt(File& file, PlistDict values) const {
  if (file.snapshot.values && *file.snapshot.values == values) return;
  const bool first = !file.snapshot.values;
  file.snapshot = {std::make_shared<const PlistDict>(std::move(values)), nextVersion_++};
  if (!first) ++foreignChanges_;
}

Status PosixPreferenceDomains::changeUser(const std::function<void(PlistDict&)>& change) {
  if (auto made = makeFolder(user_.path.parent_path()); !made) return made;
  const auto lock = ChangeLock::on(user_.path);
  if (!lock) return std::unexpected(lock.error());

  // What others wrote is taken in first, so that only our own change goes by without an alarm.
  (void)user();
  const auto old = load(user_.path);
  if (old.unreadable) return std::unexpected(*old.unreadable);
  auto values = old.values;
  change(values);
  if (values == old.values) return {};
  return replaceUser(old, std::move(values));
}

Status PosixPreferenceDomains::replaceUser(const Loaded& old, PlistDict values) {
  const auto bytes = writePlist(PlistValue(values), old.format);
  if (!bytes) return std::unexpected(bytes.error().within("Could not write " + user_.path.string()));
  const auto mode = modeOf(user_.path);
  if (old.damaged)
    if (auto aside = setAside(user_.path); !aside) return aside;
  if (auto written = writeFileAtomically(user_.path, *bytes, mode); !written) return written;

  // As it will be read: text has whole seconds of a date, and the rest would look like another's change.
  if (old.format == PlistFormat::xml)
    if (const auto reread = parsePlist(*bytes); reread && reread->root.dict()) values = *reread->root.dict();
  const std::lock_guard guard(mutex_);
  user_.snapshot = {std::make_shared<const PlistDict>(std::move(values)), nextVersion_++};
  user_.identity = FileIdentity::of(user_.path);
  user_.trusted = false;
  return {};
}

Lease PosixPreferenceDomains::watch(std::function<void()> changed) {
  if (!watchFolder_) return {};
  (void)user();
  (void)managed();
  auto look = [this, changed = std::move(changed), seen = foreignChanges()]() mutable {
    (void)user();
    (void)managed();
    if (const auto now = foreignChanges(); now != std::exchange(seen, now)) changed();
  };
  const auto shared = std::make_shared<decltype(look)>(std::move(look));
  auto userLease = watchFolder_(user_.path.parent_path(), [shared] { (*shared)(); });
  auto managedLease = watchFolder_(managed_.path.parent_path(), [shared] { (*shared)(); });
  return Lease([userLease = std::move(userLease), managedLease = std::move(managedLease)]() mutable {
    userLease.release();
    managedLease.release();
  });
}

std::uint64_t PosixPreferenceDomains::foreignChanges() const {
  const std::lock_guard lock(mutex_);
  return foreignChanges_;
}

}  // namespace corvane
