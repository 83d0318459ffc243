// All labels of a folder of fragments, indexed by the patterns of their heads, never by file name. Reads
// the folder once; a change on disk needs a new catalogue.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/error.h"
#include "core/discovery/label_fragment.h"
#include "core/logging/logging_service.h"

namespace corvane {

// Movable, not copied: the index points into the fragments. Reading from several threads is fine.
class LabelCatalog {
 public:
  // Reads every "*.sh" of the folder in name order. A damaged or unreadable fragment counts as absent, with one
  // log line that names it; of two files with the same pattern the first by name keeps it. Fails, in the
  // domain "CRVLabels" with errno as code, only when the folder itself cannot be read.
  [[nodiscard]] static Result<LabelCatalog> read(const std::filesystem::path& labelsFolder, const Logger& logger);

  LabelCatalog() = default;
  LabelCatalog(LabelCatalog&&) noexcept = default;
  LabelCatalog& operator=(LabelCatalog&&) noexcept = default;
  LabelCatalog(const LabelCatalog&) = delete;
  LabelCatalog& operator=(const LabelCatalog&) = delete;

  // In name order of their files; a fragment whose patterns all belong to earlier files is left out.
  [[nodiscard]] const std::vector<LabelFragment>& fragments() const { return fragments_; }
  [[nodiscard]] bool empty() const { return fragments_.empty(); }

  // All labels, fragment by fragment.
  [[nodiscard]] Labels labels() const;
  [[nodiscard]] bool contains(const Label& label) const { return find(label) != nullptr; }

  // The fragment behind a label; null for an unknown one. Case matters: labels are lower case.
  [[nodiscard]] const LabelFragment* find(const Label& label) const;

  // The file of the label's fragment, for whoever evaluates it. Absent for an unknown label.
  [[nodiscard]] std::optional<std::filesystem::path> file(const Label& label) const;

  // The fragments whose bundle has this file name ("Quill.app"), whatever folder it lies in. The name is
  // compared as a Mac's disk compares names, see foldedFileName().
  [[nodiscard]] std::vector<const LabelFragment*> forBundleName(std::string_view bundleName) const;

  [[nodiscard]] std::vector<const LabelFragment*> forPackageID(std::string_view packageID) const;

 private:
  void index(const Logger& logger);

  std::filesystem::path folder_;
  std::vector<LabelFragment> fragments_;
  std::unordered_map<std::string_view, std::uint32_t> byLabel_;
  std::unordered_multimap<std::string, std::uint32_t> byBundleName_;
  std::unordered_multimap<std::string_view, std::uint32_t> byPackageID_;
};

}  // namespace corvane
