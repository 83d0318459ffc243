#include "platform/posix/file_identity.h"

#include <sys/stat.h>

namespace corvane {

namespace {

using namespace std::chrono_literals;

// The kernel stamps files by its tick, which is 10 ms at its slowest setting.
constexpr auto kTimestampGrain = 20ms;

}  // namespace

std::optional<FileIdentity> FileIdentity::of(const std::filesystem::path& path) {
  struct stat found {};
  if (::stat(path.c_str(), &found) != 0) return std::nullopt;
  return FileIdentity{
      .device = found.st_dev,
      .inode = found.st_ino,
      .size = found.st_size,
      .modified = std::chrono::seconds(found.st_mtim.tv_sec) + std::chrono::nanoseconds(found.st_mtim.tv_nsec)};
}

bool FileIdentity::settled() const {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::abs(now - modified) > kTimestampGrain;
}

}  // namespace corvane
