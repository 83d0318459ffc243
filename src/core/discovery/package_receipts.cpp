#include "core/discovery/package_receipts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "base/plist.h"
#include "core/discovery/folder_reader.h"

namespace corvane {
namespace {

constexpr std::string_view kExtension = ".plist";
constexpr std::size_t kReceiptLimit = 1U << 20U;

std::string textAt(const PlistDict& dict, std::string_view key) {
  const auto found = dict.find(key);
  return found == dict.end() ? std::string() : std::string(found->second.string().value_or(std::string_view()));
}

}  // namespace

bool PackageReceipt::installsApplications() const {
  std::string_view prefix = installPrefix;
  while (prefix.starts_with('/')) prefix.remove_prefix(1);
  return prefix == "Applications" || prefix.starts_with("Applications/");
}

PackageReceipts::PackageReceipts(const std::filesystem::path& root, const Logger& logger)
    : folder_(root / "var/db/receipts"), logger_(logger) {
  const auto folder = Descriptor::openFolder(folder_);
  auto entries = folder ? folderEntries(folder->get()) : std::unexpected(folder.error());
  if (!entries) {
    if (entries.error() != ENOENT)
      logger_.warning(fmt::format("Package receipts in {} could not be read: {}", folder_.string(),
                                  std::generic_category().message(entries.error())));
    return;
  }
  for (auto& entry : *entries)
    if (entry.name.ends_with(kExtension)) names_.push_back(std::move(entry.name));
  std::ranges::sort(names_);
}

std::optional<PackageReceipt> PackageReceipts::find(std::string_view packageID) const {
  const auto name = std::string(packageID) + std::string(kExtension);
  if (packageID.empty() || !std::ranges::binary_search(names_, name)) return std::nullopt;
  const auto damaged = [&](std::string_view why) {
    logger_.warning(fmt::format("Package receipt {} is left out: {}", (folder_ / name).string(), why));
    return std::nullopt;
  };
  std::string buffer;
  const auto folder = Descriptor::openFolder(folder_);
  if (!folder) return damaged(std::generic_category().message(folder.error()));
  const auto bytes = readFileAt(folder->get(), name.c_str(), kReceiptLimit, buffer);
  if (!bytes) return damaged(std::generic_category().message(bytes.error()));
  const auto document = parsePlist(*bytes);
  if (!document) return damaged(document.error().text);
  const auto* dict = document->root.dict();
  if (dict == nullptr) return damaged("it is no dictionary");
  PackageReceipt receipt{.packageID = textAt(*dict, "PackageIdentifier"),
                         .version = textAt(*dict, "PackageVersion"),
                         .installPrefix = textAt(*dict, "InstallPrefixPath")};
  if (receipt.packageID != packageID) return damaged("it belongs to another package");
  if (receipt.version.empty()) return damaged("it holds no version");
  return receipt;
}

}  // namespace corvane
