// Which version of Installomator a script is, read without running it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// The version and its date as the script states them.
struct ToolVersion {
  std::string version;
  std::string date;  // "2026-07-03", or empty
  friend bool operator==(const ToolVersion&, const ToolVersion&) = default;
};

// From the lines VERSION="…" and VERSIONDATE="…"; absent when the script states no version.
[[nodiscard]] std::optional<ToolVersion> toolVersion(std::string_view script);

}  // namespace corvane
