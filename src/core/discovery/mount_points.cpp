#include "core/discovery/mount_points.h"

#include <mntent.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string_view>
#include <system_error>

namespace corvane {
namespace {

// The mounts as this process sees them.
constexpr const char* kMountTable = "/proc/self/mounts";

constexpr std::size_t kLongestLine = 16U << 10U;  // two paths, a type and options

}  // namespace

bool mayHoldMountPoints(const std::filesystem::path& folder) {
  std::error_code problem;
  auto place = std::filesystem::canonical(folder, problem).string();
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(::setmntent(kMountTable, "re"), ::endmntent);
  if (problem || !table) return true;
  if (!place.ends_with('/')) place += '/';
  mntent entry{};
  std::array<char, kLongestLine> line{};
  while (::getmntent_r(table.get(), &entry, line.data(), static_cast<int>(line.size())) != nullptr)
    if (std::string_view(entry.mnt_dir).starts_with(place)) return true;
  return false;
}

}  // namespace corvane
