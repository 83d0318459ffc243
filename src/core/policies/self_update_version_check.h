// Whether this program's own label names a newer version than the one that runs, and how both are shown.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "core/records/app_info.h"
#include "core/records/enumerations.h"
#include "platform/files.h"

namespace corvane {

// The versions of the running bundle.
struct RunningVersions {
  std::optional<std::string> shortVersion;   // CFBundleShortVersionString
  std::optional<std::string> bundleVersion;  // CFBundleVersion
};

struct SelfUpdateVersionCheck {
  static constexpr std::string_view bundledLabelName = "corvane4";

  // The text of the label's file, labels/<name>.sh under `fragmentsPath`. Empty when there is none, or when
  // the name is no label's (letters, digits, dash and underscore), so that it never leads out of the folder.
  [[nodiscard]] static std::string labelSource(const Label& label, const std::filesystem::path& fragmentsPath,
                                               const Files& files);

  // The value that the source gives `versionKey` as a literal, quoted or bare; the first one outside comments.
  // Absent when it gives none or a computed one.
  [[nodiscard]] static std::optional<std::string> versionKey(std::string_view source);

  // The key is the bundle (build) version's. Labels without a key compare the short version.
  [[nodiscard]] static bool comparesBundleVersion(const std::optional<std::string>& versionKey);

  // The running version in the form that the label compares; absent when the bundle does not tell it.
  [[nodiscard]] static std::optional<std::string> displayedRunningVersion(const RunningVersions& running,
                                                                          const std::optional<std::string>& versionKey);

  // False when the available or the running version is unknown: a program that cannot tell its version must
  // not replace itself again and again.
  [[nodiscard]] static bool needsUpdate(const RunningVersions& running,
                                        const std::optional<std::string>& availableVersion,
                                        const std::optional<std::string>& versionKey, VersionComparisonMethod method);
};

}  // namespace corvane
