// One edition of the tool: its script and the fragments behind it. How it is put together, which version it is, and
// whether it may take the place of another. Pure.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"
#include "core/discovery/tool_version.h"
#include "core/preferences/configuration.h"
#include "helper/tool_archive.h"

namespace corvane {

struct ToolEdition {
  std::string script;      // Installomator.sh
  ArchiveFiles fragments;  // below the folder of fragments: "functions.sh", "labels/quill.sh"
  friend bool operator==(const ToolEdition&, const ToolEdition&) = default;
};

// Where an edition is to come from, by the settings.
struct ToolSource {
  InstallomatorVersion version = InstallomatorVersion::release;
  bool assemble = false;   // put together from its fragments; never so for a release
  std::string customPath;  // of a custom one
  [[nodiscard]] static ToolSource of(const CorvaneConfiguration& config);
  // One word for the record, that differs where editions are not to be compared: "release", "main assembled".
  [[nodiscard]] std::string name() const;
  friend bool operator==(const ToolSource&, const ToolSource&) = default;
};

// Of the files of a source folder those that an edition consists of: Installomator.sh, and below fragments/ its own
// files and labels/*.sh.
[[nodiscard]] bool isOfEdition(std::string_view path);

// From those files. Fails when there is no script, or, to assemble, no fragments; or when there are no labels, but that
// a custom script may come alone and leaves the fragments as they are. `today` ("2026-11-22") becomes the date of an
// assembled one.
[[nodiscard]] Result<ToolEdition> editionFrom(ArchiveFiles files, const ToolSource& source, std::string_view today);

// Why `candidate` must not take the place of `present`; absent when it may. Of one source nothing older may; what comes
// from another source than before was chosen.
[[nodiscard]] std::optional<std::string> objectionTo(const std::optional<ToolVersion>& candidate,
                                                     const std::optional<ToolVersion>& present, bool sameSource);

}  // namespace corvane
