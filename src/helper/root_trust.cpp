#include "helper/root_trust.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <system_error>

#include "base/atomic_file.h"

namespace corvane {
namespace {

constexpr const char* kDomain = "CRVRootTrust";
constexpr mode_t kEventsMode = 01777;
constexpr int kLinks = 40;  // as many as the kernel follows

Status checkOne(const std::filesystem::path& path, uid_t ownUid) {
  struct stat state {};
  if (lstat(path.c_str(), &state) != 0) return std::unexpected(fileError("looking at", path, errno));
  if (state.st_uid != 0 && state.st_uid != ownUid)
    return failure(kDomain, EPERM, fmt::format("{} belongs to another user", path.string()));
  if (!S_ISLNK(state.st_mode) && (state.st_mode & untrustedWriters(ownUid)) != 0)
    return failure(kDomain, EPERM, fmt::format("{} may be written to by others", path.string()));
  return {};
}

Status checkUpTo(std::filesystem::path path, const std::filesystem::path& root, uid_t ownUid) {
  for (;;) {
    if (auto trusted = checkOne(path, ownUid); !trusted) return trusted;
    if (path == root || !path.has_relative_path()) return {};
    path = path.parent_path();
  }
}

// Whether `folder` lies above `root`, which was given to us: it is looked at only where a link leads elsewhere in it.
bool liesAbove(const std::filesystem::path& folder, const std::filesystem::path& root) {
  return folder != root && std::ranges::mismatch(folder, root).in1 == folder.end();
}

Status makeEventsFolder(const std::filesystem::path& folder) {
  if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return std::unexpected(fileError("making", folder, errno));
  struct stat state {};
  if (lstat(folder.c_str(), &state) != 0) return std::unexpected(fileError("looking at", folder, errno));
  if (!S_ISDIR(state.st_mode) || state.st_uid != geteuid())
    return failure(kDomain, EPERM, fmt::format("{} is no folder of the helper's own", folder.string()));
  if ((state.st_mode & 07777) != kEventsMode && chmod(folder.c_str(), kEventsMode) != 0)
    return std::unexpected(fileError("opening to all users", folder, errno));
  return {};
}

}  // namespace

mode_t untrustedWriters(uid_t ownUid) { return ownUid == 0 ? S_IWGRP | S_IWOTH : S_IWOTH; }

Status checkTrustedPath(const std::filesystem::path& path, const std::filesystem::path& root, uid_t ownUid) {
  if (auto named = checkOne(root, ownUid); !named) return named;
  std::error_code error;
  const auto realRoot = std::filesystem::canonical(root, error);
  if (error) return std::unexpected(fileError("following", root, error.value()));
  const auto below = path.lexically_relative(root);
  if (below.empty()) return failure(kDomain, EINVAL, fmt::format("{} is not in {}", path.string(), root.string()));
  auto at = realRoot;  // never behind a link
  std::deque<std::filesystem::path> ahead(below.begin(), below.end());
  for (int links = 0; !ahead.empty();) {
    const auto part = std::move(ahead.front());
    ahead.pop_front();
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      at = at.parent_path();
      continue;
    }
    const auto next = at / part;  // "/" where a link starts with it
    const bool aboveRoot = liesAbove(next, realRoot);
    auto trusted = aboveRoot ? Status() : checkUpTo(next, realRoot, ownUid);
    if (!trusted) return trusted;
    if (aboveRoot || !std::filesystem::is_symlink(next, error)) {
      at = next;
      continue;
    }
    const auto target = std::filesystem::read_symlink(next, error);
    if (!error && ++links > kLinks) error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
    if (error) return std::unexpected(fileError("following", next, error.value()));
    ahead.insert(ahead.begin(), target.begin(), target.end());
  }
  return checkUpTo(at, realRoot, ownUid);
}

Status prepareFolders(const CorvaneConstants& places) {
  for (const auto& folder : {places.supportFolder(), places.logFolder(), places.helperSocket().parent_path()}) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return std::unexpected(fileError("making", folder, error.value()));
    if (geteuid() != 0) continue;
    if (auto own = checkTrustedPath(folder, places.root, 0); !own) return own;
  }
  return makeEventsFolder(places.deferralEventsFolder());
}

}  // namespace corvane
