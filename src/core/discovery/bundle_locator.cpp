#include "core/discovery/bundle_locator.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <vector>

#include "core/discovery/file_name_folding.h"

namespace corvane {
namespace {

constexpr std::string_view kApplications = "/Applications";
constexpr std::string_view kUtilities = "/Applications/Utilities";

std::string_view withoutSlash(std::string_view folder) {
  while (folder.ends_with('/')) folder.remove_suffix(1);
  return folder;
}

std::string joinedPath(std::string_view folder, std::string_view below) {
  return std::string(withoutSlash(folder)) + "/" + std::string(below);
}

bool isInside(std::string_view path, std::string_view folder) {
  return foldedFileName(path).starts_with(foldedFileName(withoutSlash(folder)) + "/");
}

const InstalledBundle* at(std::string_view path, const std::vector<const InstalledBundle*>& bundles) {
  if (bundles.empty()) return nullptr;
  const auto folded = foldedFileName(path);
  const auto found = std::ranges::find_if(
      bundles, [&](const InstalledBundle* bundle) { return foldedFileName(bundle->logicalPath) == folded; });
  return found == bundles.end() ? nullptr : *found;
}

bool leadsUpwards(std::string_view path) {
  return ("/" + std::string(path) + "/").find("/../") != std::string::npos || path.find('\0') != std::string_view::npos;
}

}  // namespace

const InstalledBundle* BundleLocator::locate(const LabelFragment& fragment) {
  const auto below = fragment.bundlePath();
  if (!below || leadsUpwards(*below)) return nullptr;
  const auto target = fragment.installFolder();
  auto found = inventory_.named(std::string_view(*below).substr(below->rfind('/') + 1));
  std::erase_if(found, [](const InstalledBundle* bundle) { return bundle->inHome; });

  for (const std::string_view folder : {std::string_view(target), kApplications, kUtilities}) {
    const auto wanted = joinedPath(folder, *below);
    const auto* scanned = at(wanted, found);
    const auto* direct = scanned != nullptr ? scanned : elsewhere(wanted);
    if (direct != nullptr) return isInside(direct->logicalPath, target) ? direct : nullptr;
  }
  std::erase_if(found, [&](const InstalledBundle* bundle) { return !isInside(bundle->logicalPath, target); });
  return found.size() == 1 ? found.front() : nullptr;
}

// A bundle that no inventory holds: outside /Applications, or of another kind than ".app".
const InstalledBundle* BundleLocator::elsewhere(const std::string& logicalPath) {
  const bool scanned = logicalPath.ends_with(".app") && isInside(logicalPath, kApplications);
  // The volume itself is the target of packages, never the place of a bundle.
  const bool topLevel = logicalPath.find('/', 1) == std::string::npos;
  if (scanned || topLevel || leadsUpwards(logicalPath)) return nullptr;
  const auto known = elsewhere_.find(logicalPath);
  if (known != elsewhere_.end()) return &known->second;
  const auto path = root_ / logicalPath.substr(1);
  std::error_code problem;
  if (isIgnoredPath(path.string(), rules_.ignoredPaths) || !std::filesystem::is_directory(path, problem))
    return nullptr;
  InstalledBundle bundle{.path = path.string(), .logicalPath = logicalPath, .inHome = false};
  return &elsewhere_.emplace(logicalPath, std::move(bundle)).first->second;
}

}  // namespace corvane
