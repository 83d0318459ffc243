// How zsh is asked for a label's latest version: what the child is given, and what its end tells. Starts nothing.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/records/app_info.h"
#include "platform/child_processes.h"

namespace corvane {

// One label may take this long: of the public catalogue all but eight, which never end without a network, take
// well below a second beside their downloads.
inline constexpr Duration kLabelTimeLimit = 20s;
// A page that never ends must not take the machine's memory or disk in that time. A shell with the programs that read
// pages takes well below a tenth of it.
inline constexpr ChildBounds kLabelBounds{.memory = 1U << 30U, .fileSize = 256U << 20U};
// The kernel takes 128 KiB an argument; no label comes near.
inline constexpr std::size_t kEvaluatedFragmentLimit = 120U << 10U;

// The latest version of a label, or why there is none, for the row. `notInMetadata`: the label ran to its end
// and named no version at all, so only a download could tell.
struct VersionAnswer {
  std::optional<std::string> version;
  std::string failureReason;
  bool notInMetadata = false;
  friend bool operator==(const VersionAnswer&, const VersionAnswer&) = default;
};
[[nodiscard]] VersionAnswer versionFailure(std::string_view reason);

// What all evaluations of one check share.
struct EvaluationSetting {
  std::string zsh;                  // absolute path
  std::filesystem::path functions;  // the tool's functions.sh, readable by the child
  std::filesystem::path home;       // a scratch folder that the child may write to
  std::optional<std::pair<uid_t, gid_t>> runAs;
};

// A child that evaluates `fragment` for `label` and then prints `marker` and the version on a line of its own. The
// marker must be unguessable: the label's own output, and that of pages, comes on the same stream.
[[nodiscard]] ChildSpec evaluationChild(const EvaluationSetting& setting, const Label& label, std::string fragment,
                                        const std::string& marker);

[[nodiscard]] VersionAnswer readEvaluation(const Result<ChildExit>& exit, std::string_view marker);

// Labels whose fragment does harm by being evaluated: adobereaderdc removes the installed application when one of
// its files is missing. They are not asked for a version.
[[nodiscard]] bool isNeverEvaluated(const Label& label);

using ChildEnvironment = std::vector<std::pair<std::string, std::string>>;

// The whole environment of the tool that installs: PATH with the system's folders only, HOME and LANG.
[[nodiscard]] ChildEnvironment toolEnvironment(const std::filesystem::path& home);

// The same for a child without rights that only looks. Its temporary files lie in `scratchHome` too, where they go with
// it: such a child is often killed before it could remove a download. It finds the programs of /usr/local, which
// belongs to an ordinary user on many machines.
[[nodiscard]] ChildEnvironment lookerEnvironment(const std::filesystem::path& scratchHome);

}  // namespace corvane
