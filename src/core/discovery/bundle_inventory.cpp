#include "core/discovery/bundle_inventory.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/evp.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <system_error>
#include <utility>

#include "base/ascii.h"
#include "base/utf8.h"
#include "core/discovery/file_name_folding.h"
#include "core/discovery/folder_reader.h"
#include "core/discovery/mount_points.h"
#include "core/discovery/shared_work.h"

namespace corvane {
namespace {

constexpr std::string_view kBundleExtension = ".app";

std::vector<std::string> lowercasedTexts(std::span<const std::string_view> texts) {
  std::vector<std::string> result;
  for (const auto text : texts) result.push_back(lowercased(std::string(text)));
  return result;
}

bool isBundleName(std::string_view name) {
  if (name.size() <= kBundleExtension.size() || name.front() == '.') return false;
  const auto extension = name.substr(name.size() - kBundleExtension.size());
  return equalIgnoringCase(extension, kBundleExtension);
}

std::optional<struct stat> statusAt(int folder, const char* name, int flags) {
  struct stat status {};
  if (::fstatat(folder, name, &status, flags) != 0) return std::nullopt;
  return status;
}

std::optional<dev_t> volumeOf(const std::filesystem::path& path) {
  const auto status = statusAt(AT_FDCWD, path.c_str(), 0);
  return status ? std::optional(status->st_dev) : std::nullopt;
}

// One walk over the folders of applications.
class Scan {
 public:
  Scan(const CorvaneConstants& constants, const ScanRules& rules, const Logger& logger)
      : root_(constants.root.string()), rules_(rules), logger_(logger) {
    while (root_.ends_with('/')) root_.pop_back();
    if (rules.ignoreExternalDrives)
      for (const auto& place : {constants.root, constants.root / "Applications", constants.home})
        if (const auto volume = volumeOf(place)) ownVolumes_.insert(*volume);
  }

  // errno of the folder itself; 0 when it was read or is not there.
  int walkRoot(const std::filesystem::path& folder, bool inHome) {
    inHome_ = inHome;
    const auto opened = Descriptor::openFolder(folder);
    if (!opened) return opened.error() == ENOENT ? 0 : opened.error();
    if (rules_.ignoreExternalDrives && !staysOnOwnVolumes(folder)) askEachForItsVolume_ = true;
    return walk(opened->get(), folder.string(), 0);
  }

  // A link counts only where it leads to a bundle that was not found without one.
  std::vector<InstalledBundle> take() {
    dropBundlesOnOtherVolumes();
    std::set<Identity> seen;
    if (!linked_.empty())
      for (const auto& bundle : found_)
        if (const auto status = statusAt(AT_FDCWD, bundle.path.c_str(), 0)) seen.insert(identityOf(*status));
    for (auto& linked : linked_)
      if (seen.insert(linked.identity).second) found_.push_back(std::move(linked.bundle));
    std::ranges::sort(found_, {}, &InstalledBundle::path);
    return std::move(found_);
  }

 private:
  using Identity = std::pair<dev_t, ino_t>;
  struct Linked {
    InstalledBundle bundle;
    Identity identity;
  };
  static Identity identityOf(const struct stat& status) { return {status.st_dev, status.st_ino}; }

  int walk(int folder, const std::string& path, int depth) {
    auto entries = folderEntries(folder);
    if (!entries) return entries.error();
    // Sorted, so that which of two links to one bundle counts does not hang on the disk's order.
    std::ranges::sort(*entries, {}, &FolderEntry::name);
    for (const auto& entry : *entries) {
      if (!isUtf8(entry.name))
        unspeakable(path, entry);
      else if (isBundleName(entry.name))
        bundle(folder, path, entry);
      else if (isWorthAWalk(entry, depth))
        subfolder(folder, path, entry, depth);
    }
    return 0;
  }

  static bool isWorthAWalk(const FolderEntry& entry, int depth) {
    if (entry.kind == EntryKind::folder) return depth < kScanDepth && entry.name.front() != '.';
    return entry.kind == EntryKind::link && depth == 0 && entry.name == "Utilities";
  }

  // A Mac's own disks hold no such names. They could be told to nobody, so that nothing could be ordered for them.
  void unspeakable(const std::string& path, const FolderEntry& entry) {
    if (entry.kind == EntryKind::folder || isBundleName(entry.name))
      logger_.warning(fmt::format("Left out {}/{}: its name is no UTF-8", path, validUtf8(entry.name)));
  }

  void subfolder(int folder, const std::string& path, const FolderEntry& entry, int depth) {
    auto inner = path + "/" + entry.name;
    if (isIgnoredPath(inner, rules_.ignoredPaths)) return;
    if (entry.kind == EntryKind::link) askEachForItsVolume_ = true;
    const auto opened = Descriptor::openFolderAt(folder, entry.name.c_str());
    const int problem = opened ? walk(opened->get(), inner, depth + 1) : opened.error();
    if (problem != 0 && problem != ENOENT)
      logger_.warning(fmt::format("Folder {} is skipped: {}", inner, std::generic_category().message(problem)));
  }

  void bundle(int folder, const std::string& path, const FolderEntry& entry) {
    if (entry.kind != EntryKind::folder && entry.kind != EntryKind::link) return;
    InstalledBundle found{.path = path + "/" + entry.name, .logicalPath = {}, .inHome = inHome_};
    if (isIgnoredPath(found.path, rules_.ignoredPaths)) return;
    found.logicalPath = found.path.starts_with(root_ + "/") ? found.path.substr(root_.size()) : found.path;
    if (entry.kind != EntryKind::link) return found_.push_back(std::move(found));
    const auto status = statusAt(folder, entry.name.c_str(), 0);
    if (!status || !S_ISDIR(status->st_mode) || leadsToAnotherVolume(found.path, *status)) return;
    linked_.push_back({std::move(found), identityOf(*status)});
  }

  bool staysOnOwnVolumes(const std::filesystem::path& folder) const {
    const auto volume = volumeOf(folder);
    return volume && ownVolumes_.contains(*volume) && !mayHoldMountPoints(folder);
  }

  // Shared, as it takes as long as the walk.
  void dropBundlesOnOtherVolumes() {
    if (!rules_.ignoreExternalDrives || !askEachForItsVolume_) return;
    std::vector<char> stays(found_.size());
    forEachShared(found_.size(), [&](std::size_t i) {
      const auto volume = volumeOf(found_[i].path);
      stays[i] = volume && ownVolumes_.contains(*volume) ? 1 : 0;
    });
    std::vector<InstalledBundle> staying;
    for (std::size_t i = 0; i < found_.size(); ++i)
      if (stays[i] != 0) staying.push_back(std::move(found_[i]));
    found_ = std::move(staying);
  }

  bool leadsToAnotherVolume(const std::string& path, const struct stat& status) const {
    if (!rules_.ignoreExternalDrives) return false;
    if (!ownVolumes_.contains(status.st_dev)) return true;
    std::error_code problem;
    const auto target = std::filesystem::canonical(path, problem).string();
    const auto root = std::filesystem::canonical(root_.empty() ? "/" : root_, problem).string();
    return !problem && target.starts_with(root == "/" ? "/Volumes/" : root + "/Volumes/");
  }

  std::string root_;  // without a "/" behind it
  const ScanRules& rules_;
  const Logger& logger_;
  std::set<dev_t> ownVolumes_;
  bool askEachForItsVolume_ = false;  // any bundle's folder may be a mount point
  bool inHome_ = false;
  std::vector<InstalledBundle> found_;
  std::vector<Linked> linked_;
};

}  // namespace

bool isIgnoredPath(std::string_view path, const std::vector<std::string>& substrings) {
  static const auto kDefaults = lowercasedTexts(kIgnoredPathDefaults);
  const auto whole = lowercased(std::string(path)) + "/";
  const auto isWithin = [&whole](const std::string& part) { return whole.find(part) != std::string::npos; };
  return std::ranges::any_of(kDefaults, isWithin) || std::ranges::any_of(substrings, [&](const std::string& part) {
           return !part.empty() && isWithin(lowercased(part));
         });
}

Result<BundleInventory> BundleInventory::scan(const CorvaneConstants& constants, const ScanRules& rules,
                                              const Logger& logger) {
  Scan scan(constants, rules, logger);
  const auto applications = constants.root / "Applications";
  if (const int problem = scan.walkRoot(applications, false); problem != 0)
    return failure("CRVBundles", problem,
                   fmt::format("The folder {} could not be read: {}", applications.string(),
                               std::generic_category().message(problem)));
  const auto own = constants.home / "Applications";
  if (!constants.home.empty())
    if (const int problem = scan.walkRoot(own, true); problem != 0)
      logger.warning(fmt::format("Folder {} is skipped: {}", own.string(), std::generic_category().message(problem)));

  BundleInventory inventory;
  inventory.bundles_ = scan.take();
  inventory.byName_.reserve(inventory.bundles_.size());
  for (std::size_t i = 0; i < inventory.bundles_.size(); ++i)
    inventory.byName_.emplace(foldedFileName(inventory.bundles_[i].fileName()), i);
  return inventory;
}

std::vector<const InstalledBundle*> BundleInventory::named(std::string_view fileName) const {
  std::vector<const InstalledBundle*> found;
  const auto [first, last] = byName_.equal_range(foldedFileName(fileName));
  for (auto at = first; at != last; ++at) found.push_back(&bundles_[at->second]);
  std::ranges::sort(found);
  return found;
}

std::string BundleInventory::fingerprint() const {
  std::vector<std::string_view> paths;
  paths.reserve(bundles_.size());
  for (const auto& bundle : bundles_) paths.push_back(bundle.logicalPath);
  std::ranges::sort(paths);
  std::string all;
  for (const auto path : paths) all.append(path).push_back('\0');  // no path holds a NUL
  std::array<std::uint8_t, EVP_MAX_MD_SIZE> digest{};
  unsigned length = 0;
  EVP_Digest(all.data(), all.size(), digest.data(), &length, EVP_sha256(), nullptr);
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(2UL * length);
  for (const auto byte : std::span(digest).first(length)) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 15U];
  }
  return text;
}

}  // namespace corvane
