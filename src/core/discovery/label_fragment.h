// One label fragment read as text: what it sets to a literal, and what it computes. Runs no shell and
// judges no value; a fragment is hostile input like any other file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.h"
#include "core/records/app_info.h"

namespace corvane {

// The variables of a fragment that the inventory needs.
enum class LabelVariable {
  name,
  type,
  appName,
  packageID,
  expectedTeamID,
  versionKey,
  blockingProcesses,
  targetDir,
  folderName,
  updateTool,
  appNewVersion
};

// Labels have some 9 lines, the longest public one 65; a file above this size is no label.
inline constexpr std::size_t kLabelFragmentLimit = 256U << 10U;

// A value. A field is absent when the fragment never sets it, or only to something that a shell would have
// to work out (a command, a branch's variable): isComputed() tells the two apart. Of several literals the
// first one counts, but a version that is set to two different texts, or computed anywhere, counts as computed.
// ${folderName} and other variables that the fragment itself set to a literal are filled in.
struct LabelFragment {
  std::string fileName;  // without ".sh"; says nothing about the label's name
  Labels labels;         // the patterns of the head in their order; never empty
  std::optional<std::string> name;
  std::optional<std::string> type;
  std::optional<std::string> appName;
  std::optional<std::string> packageID;
  std::optional<std::string> expectedTeamID;
  std::optional<std::string> versionKey;
  std::optional<std::vector<std::string>> blockingProcesses;
  std::optional<std::string> targetDir;
  std::optional<std::string> folderName;
  std::optional<std::string> updateTool;
  std::optional<std::string> appNewVersion;
  bool declaresCustomVersion = false;  // the fragment brings an appCustomVersion() of its own

  [[nodiscard]] bool isComputed(LabelVariable variable) const {
    return (computed & (1U << static_cast<unsigned>(variable))) != 0;
  }

  // Where the application lies below its folder: `appName`, else `name` with ".app" ("Vendor Tools/Quill.app"
  // for labels that copy a folder). Absent when a shell would be needed to know.
  [[nodiscard]] std::optional<std::string> bundlePath() const;

  // The key of Info.plist that holds the installed version: `versionKey`, else CFBundleShortVersionString.
  [[nodiscard]] std::string_view installedVersionKey() const;

  // `targetDir`, else the tool's own default: "/" for the kinds of package, "/Applications" for the rest.
  [[nodiscard]] std::string installFolder() const;

  // The process names that block an install: the list, else `name`; empty for the list that begins with NONE.
  [[nodiscard]] std::vector<std::string> blockingProcessNames() const;

  unsigned computed = 0;  // a bit a LabelVariable

  friend bool operator==(const LabelFragment&, const LabelFragment&) = default;
};

// Reads a fragment's text. The head may join patterns with "|", continue lines and be indented; the body goes
// up to the last ";;". Fails, in the domain "CRVLabels", with the reason for the log when there is no usable
// head, no closing ";;", a quote, bracket or function that never closes, a NUL byte, no UTF-8, no `name` at all, or
// more than kLabelFragmentLimit bytes. Any thread; linear in the text.
[[nodiscard]] Result<LabelFragment> parseLabelFragment(std::string_view fileName, std::string_view text);

}  // namespace corvane
