#include "helper/catalog_keeper.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

#include "core/discovery/folder_reader.h"

namespace corvane {
namespace {

std::int64_t nanoseconds(const timespec& time) { return time.tv_sec * 1'000'000'000LL + time.tv_nsec; }

}  // namespace

CatalogKeeper::Stamps CatalogKeeper::stampsOf(const std::filesystem::path& folder) {
  Stamps stamps;
  const auto open = Descriptor::openFolder(folder);
  if (!open) return stamps;
  const auto entries = folderEntries(open->get());
  if (!entries) return stamps;
  stamps.reserve(entries->size());
  for (const auto& entry : *entries) {
    struct stat state {};
    // What cannot be looked at keeps its zeros, and differs once it can.
    if (fstatat(open->get(), entry.name.c_str(), &state, 0) != 0) state = {};
    stamps.push_back({.name = entry.name,
                      .device = state.st_dev,
                      .inode = state.st_ino,
                      .size = static_cast<std::uint64_t>(state.st_size),
                      .modified = nanoseconds(state.st_mtim),
                      .changed = nanoseconds(state.st_ctim)});
  }
  std::ranges::sort(stamps, {}, &Stamp::name);
  return stamps;
}

bool CatalogKeeper::settled(const Stamps& stamps, Date now) {
  const auto latest = std::chrono::nanoseconds((now - kStampSettles).time_since_epoch()).count();
  return std::ranges::all_of(stamps, [latest](const Stamp& stamp) { return stamp.changed <= latest; });
}

Result<std::shared_ptr<const LabelCatalog>> CatalogKeeper::current(const std::filesystem::path& labelsFolder) {
  const auto now = clock_.now();
  auto stamps = stampsOf(labelsFolder);
  if (auto kept = keptFor(labelsFolder, stamps)) return kept;

  TroubleLog::Round round(troubles_);
  auto read = LabelCatalog::read(labelsFolder, Logger(round, "AppDiscoverer"));
  if (!read) return std::unexpected(read.error());
  round.sawEverything();
  auto fresh = std::make_shared<const LabelCatalog>(std::move(*read));
  if (!settled(stamps, now)) stamps.clear();
  const std::scoped_lock lock(mutex_);
  catalog_ = fresh;
  folder_ = labelsFolder;
  stamps_ = std::move(stamps);
  return fresh;
}

std::shared_ptr<const LabelCatalog> CatalogKeeper::keptFor(const std::filesystem::path& folder,
                                                           const Stamps& stamps) const {
  const std::scoped_lock lock(mutex_);
  return catalog_ && folder_ == folder && !stamps_.empty() && stamps == stamps_ ? catalog_ : nullptr;
}

}  // namespace corvane
