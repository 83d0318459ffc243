// The tool on disk: an edition is read from a folder, and put in the place of the one before so that a crash at any
// moment leaves one of them whole. Decides nothing.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/error.h"
#include "core/places.h"
#include "helper/tool_edition.h"

namespace corvane {

// Any thread, one at a time.
class ToolPlace {
 public:
  explicit ToolPlace(const CorvaneConstants& places);

  // After a crash: what was moved out of the way comes back where nothing has taken its place, and the rest goes.
  void settle() const;

  // A custom edition: `path` is a folder with Installomator.sh and fragments/, or a script, beside which fragments/ may
  // lie. Only plain files of some size are read, no links.
  [[nodiscard]] static Result<ToolEdition> readCustom(const std::filesystem::path& path, const ToolSource& source,
                                                      std::string_view today);

  [[nodiscard]] std::optional<ToolVersion> version() const;
  // The name of the source that the tool in place came from; empty when we did not put it there.
  [[nodiscard]] std::string sourceName() const;
  [[nodiscard]] bool holds(const ToolEdition& edition) const;

  // The script where it can be looked at before it is used.
  [[nodiscard]] std::filesystem::path candidate() const;
  [[nodiscard]] Status writeCandidate(const ToolEdition& edition) const;
  void dropCandidate() const;

  // The edition whose candidate was written takes its place: fragments first, then the script, each by a rename.
  [[nodiscard]] Status install(const ToolEdition& edition, const std::string& sourceName) const;

 private:
  std::filesystem::path script_;
  std::filesystem::path fragments_;
};

}  // namespace corvane
