// The label catalogue, read again only when its files changed. Watches nothing: whoever asks has it looked up.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/discovery/label_catalog.h"
#include "helper/trouble_log.h"
#include "platform/clock.h"

namespace corvane {

// The coarsest time stamps of a Mac's disks count whole seconds. A file that changed this short a time before it was
// read may change once more without another stamp, so such a reading is used but not kept.
inline constexpr Duration kStampSettles = 2s;

// Any thread. Nobody waits for another's look at the folder: two who come at once may both read it.
class CatalogKeeper {
 public:
  CatalogKeeper(const Clock& clock, LogSink& log) : clock_(clock), troubles_(log) {}

  // The catalogue of the folder as it stands now. A fragment that was added, removed, replaced or edited in place is
  // noticed by its inode, size and times. Fails as LabelCatalog::read() does. A damaged fragment is told to the log
  // once until it is mended.
  [[nodiscard]] Result<std::shared_ptr<const LabelCatalog>> current(const std::filesystem::path& labelsFolder);

 private:
  struct Stamp {
    std::string name;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0;  // nanoseconds
    std::int64_t changed = 0;   // of the inode: no program can set it back
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  using Stamps = std::vector<Stamp>;
  [[nodiscard]] static Stamps stampsOf(const std::filesystem::path& folder);
  [[nodiscard]] static bool settled(const Stamps& stamps, Date now);
  // Null when what is kept is of another folder or of other files.
  [[nodiscard]] std::shared_ptr<const LabelCatalog> keptFor(const std::filesystem::path& folder,
                                                            const Stamps& stamps) const;

  const Clock& clock_;
  TroubleLog troubles_;
  mutable std::mutex mutex_;
  std::filesystem::path folder_;
  Stamps stamps_;  // empty: nothing is kept
  std::shared_ptr<const LabelCatalog> catalog_;
};

}  // namespace corvane
