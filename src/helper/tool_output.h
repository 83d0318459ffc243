// What the installer tool says on its lines. Pure reading; nothing is run or logged here.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

inline constexpr std::size_t kVersionLengthLimit = 40;

// What labels and the tool name as a version is believed only if it is ASCII, begins with a letter or digit, holds a
// digit, no blank and no slash, and has at most 40 characters: failures of a download look like data otherwise.
[[nodiscard]] bool isBelievableVersion(std::string_view text);

// The message of a line "YYYY-MM-DD HH:MM:SS : LEVEL : label : message". Absent for the output of other programs,
// which comes without that head.
[[nodiscard]] std::optional<std::string_view> toolMessage(std::string_view line);

// The latest version that a line tells, from the label's metadata or from the download, when it is believable.
[[nodiscard]] std::optional<std::string> latestVersionIn(std::string_view line);

// The process that blocks the install, told just before a dialog for it comes up.
[[nodiscard]] std::optional<std::string> blockingProcessIn(std::string_view line);

}  // namespace corvane
