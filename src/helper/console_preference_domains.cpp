#include "helper/console_preference_domains.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "base/atomic_file.h"
#include "helper/root_trust.h"

namespace corvane {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] int get() const { return fd_; }

 private:
  int fd_;
};

Error unusable(const std::filesystem::path& path, std::string_view why) {
  return {.domain = "CRVFiles", .code = EPERM, .text = fmt::format("{} is not read: {}", path.string(), why)};
}

std::shared_ptr<const PlistDict> emptyDict() { return std::make_shared<const PlistDict>(); }

Result<PlistDict> parseDomain(const std::filesystem::path& path, const std::string& bytes) {
  auto document = parsePlist(bytes);
  if (!document) return std::unexpected(document.error().within(path.string() + " is damaged"));
  const auto* dict = document->root.dict();
  if (!dict) return std::unexpected(unusable(path, "it holds no dictionary"));
  return *dict;
}

}  // namespace

Result<std::optional<std::string>> readFileOfUser(const std::filesystem::path& path, uid_t owner, mode_t untrusted) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (file.get() < 0) {
    if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
    return std::unexpected(fileError("reading", path, errno));
  }
  struct stat state {};
  if (fstat(file.get(), &state) != 0) return std::unexpected(fileError("reading", path, errno));
  if (!S_ISREG(state.st_mode)) return std::unexpected(unusable(path, "it is no regular file"));
  if (state.st_uid != owner && state.st_uid != 0) return std::unexpected(unusable(path, "it belongs to somebody else"));
  if ((state.st_mode & untrusted) != 0) return std::unexpected(unusable(path, "others may write to it"));
  std::string bytes(kPreferenceFileLimit + 1, '\0');
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const auto got = read(file.get(), bytes.data() + filled, bytes.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::unexpected(fileError("reading", path, errno));
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  if (filled > kPreferenceFileLimit) return std::unexpected(unusable(path, "it is too large"));
  bytes.resize(filled);
  return bytes;
}

ConsolePreferenceDomains::ConsolePreferenceDomains(Paths paths, std::function<void(std::string_view)> log)
    : paths_(std::move(paths)), log_(std::move(log)) {
  user_.snapshot = managed_.snapshot = {.values = emptyDict(), .version = nextVersion_++};
}

DomainSnapshot ConsolePreferenceDomains::refresh(File& file, const std::filesystem::path& path, Status trusted,
                                                 const std::function<Reading()>& read) const {
  const auto identity = path.empty() ? std::nullopt : FileIdentity::of(path);
  const auto refusal = identity && !trusted ? unusable(path, trusted.error().text).text : std::string();
  const bool sameState = path == file.path && identity == file.identity && refusal == file.refusal;
  if (sameState && (!identity || identity->settled())) return file.snapshot;
  auto bytes = identity && trusted ? read() : Reading(std::nullopt);
  PlistDict values;
  std::string trouble = bytes ? refusal : bytes.error().text;
  if (bytes && *bytes) {
    if (auto parsed = parseDomain(path, **bytes))
      values = std::move(*parsed);
    else
      trouble = parsed.error().text;
  }
  if (!trouble.empty() && !sameState) log_(trouble);
  file.path = path;
  file.identity = identity;
  file.refusal = refusal;
  if (values != *file.snapshot.values)
    file.snapshot = {.values = std::make_shared<const PlistDict>(std::move(values)), .version = nextVersion_++};
  return file.snapshot;
}

DomainSnapshot ConsolePreferenceDomains::user() const {
  const auto user = paths_.consoleUser();
  const std::scoped_lock lock(mutex_);
  const auto path = user ? paths_.userFile(user->home) : std::filesystem::path();
  return refresh(user_, path, {}, [&] { return readFileOfUser(path, user ? user->uid : 0); });
}

DomainSnapshot ConsolePreferenceDomains::managed() const {
  const std::scoped_lock lock(mutex_);
  const auto own = geteuid();
  return refresh(managed_, paths_.managed, checkTrustedPath(paths_.managed, paths_.root, own),
                 [&] { return readFileOfUser(paths_.managed, own, untrustedWriters(own)); });
}

Status ConsolePreferenceDomains::changeUser(const std::function<void(PlistDict&)>&) {
  return failure("CRVFiles", EROFS, "the helper does not change a user's preferences");
}

Lease ConsolePreferenceDomains::watch(std::function<void()>) { return {}; }

}  // namespace corvane
