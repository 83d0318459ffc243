#include "core/discovery/label_catalog.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "core/discovery/file_name_folding.h"
#include "core/discovery/folder_reader.h"
#include "core/discovery/shared_work.h"

namespace corvane {
namespace {

constexpr std::string_view kExtension = ".sh";

std::expected<std::vector<std::string>, int> fragmentFiles(int folder) {
  auto entries = folderEntries(folder);
  if (!entries) return std::unexpected(entries.error());
  std::vector<std::string> names;
  names.reserve(entries->size());
  for (auto& entry : *entries) {
    const bool readable = entry.kind == EntryKind::file || entry.kind == EntryKind::link;
    if (readable && entry.name.size() > kExtension.size() && entry.name.ends_with(kExtension) && entry.name[0] != '.')
      names.push_back(std::move(entry.name));
  }
  std::ranges::sort(names);
  return names;
}

Result<LabelFragment> readFragment(int folder, const std::string& file) {
  thread_local std::string buffer;
  const auto text = readFileAt(folder, file.c_str(), kLabelFragmentLimit, buffer);
  if (!text) return failure("CRVLabels", text.error(), std::generic_category().message(text.error()));
  return parseLabelFragment(std::string_view(file).substr(0, file.size() - kExtension.size()), *text);
}

// "Vendor/Quill.app" lies on disk as "Quill.app".
std::string_view lastComponent(std::string_view path) { return path.substr(path.rfind('/') + 1); }

}  // namespace

Result<LabelCatalog> LabelCatalog::read(const std::filesystem::path& labelsFolder, const Logger& logger) {
  const auto cannotRead = [&](int problem) {
    return failure("CRVLabels", problem,
                   fmt::format("The labels folder {} could not be read: {}", labelsFolder.string(),
                               std::generic_category().message(problem)));
  };
  const auto folder = Descriptor::openFolder(labelsFolder);
  if (!folder) return cannotRead(folder.error());
  const auto files = fragmentFiles(folder->get());
  if (!files) return cannotRead(files.error());

  std::vector<Result<LabelFragment>> read(files->size(), std::unexpected(Error{}));
  forEachShared(files->size(), [&](std::size_t i) { read[i] = readFragment(folder->get(), (*files)[i]); });

  LabelCatalog catalog;
  catalog.folder_ = labelsFolder;
  catalog.fragments_.reserve(read.size());
  for (std::size_t i = 0; i < read.size(); ++i) {
    if (read[i])
      catalog.fragments_.push_back(std::move(*read[i]));
    else
      logger.warning(fmt::format("Label fragment {} is left out: {}", (labelsFolder / (*files)[i]).string(),
                                 read[i].error().text));
  }
  catalog.index(logger);
  return catalog;
}

void LabelCatalog::index(const Logger& logger) {
  byLabel_.reserve(fragments_.size() * 2);
  // A pattern that an earlier file has is never reached behind it.
  for (std::size_t i = 0; i < fragments_.size(); ++i) {
    std::erase_if(fragments_[i].labels, [&](const Label& label) {
      const auto found = byLabel_.find(label.text);
      if (found == byLabel_.end()) return false;
      logger.verbose(fmt::format("Label {} of {}.sh is hidden by {}.sh", label.text, fragments_[i].fileName,
                                 fragments_[found->second].fileName));
      return true;
    });
    for (const auto& label : fragments_[i].labels) byLabel_.emplace(label.text, static_cast<std::uint32_t>(i));
  }
  byLabel_.clear();
  std::erase_if(fragments_, [](const LabelFragment& fragment) { return fragment.labels.empty(); });

  byBundleName_.reserve(fragments_.size());
  for (std::uint32_t i = 0; i < fragments_.size(); ++i) {
    for (const auto& label : fragments_[i].labels) byLabel_.emplace(label.text, i);
    if (const auto path = fragments_[i].bundlePath()) byBundleName_.emplace(foldedFileName(lastComponent(*path)), i);
    if (const auto& id = fragments_[i].packageID; id && !id->empty()) byPackageID_.emplace(*id, i);
  }
}

Labels LabelCatalog::labels() const {
  Labels all;
  all.reserve(byLabel_.size());
  for (const auto& fragment : fragments_) all.insert(all.end(), fragment.labels.begin(), fragment.labels.end());
  return all;
}

const LabelFragment* LabelCatalog::find(const Label& label) const {
  const auto found = byLabel_.find(label.text);
  return found == byLabel_.end() ? nullptr : &fragments_[found->second];
}

std::optional<std::filesystem::path> LabelCatalog::file(const Label& label) const {
  const auto* fragment = find(label);
  if (fragment == nullptr) return std::nullopt;
  return folder_ / (fragment->fileName + std::string(kExtension));
}

std::vector<const LabelFragment*> LabelCatalog::forBundleName(std::string_view bundleName) const {
  std::vector<const LabelFragment*> found;
  const auto [first, last] = byBundleName_.equal_range(foldedFileName(bundleName));
  for (auto at = first; at != last; ++at) found.push_back(&fragments_[at->second]);
  std::ranges::sort(found);
  return found;
}

std::vector<const LabelFragment*> LabelCatalog::forPackageID(std::string_view packageID) const {
  std::vector<const LabelFragment*> found;
  const auto [first, last] = byPackageID_.equal_range(packageID);
  for (auto at = first; at != last; ++at) found.push_back(&fragments_[at->second]);
  std::ranges::sort(found);
  return found;
}

}  // namespace corvane
