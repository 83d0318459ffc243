// The batch job that writes a diagnostic bundle: what it takes from the command line, and what it says.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/date.h"
#include "base/error.h"
#include "base/task.h"

namespace corvane {

inline constexpr Duration kDiagnosticLimit = 120s;
inline constexpr const char* kDiagnosticFolder = "/var/tmp";  // where the zip goes when nothing else is said

// The home of the user with this name, of the running user for an empty one; absent for an unknown one.
using HomeOf = std::function<std::optional<std::filesystem::path>(std::string_view user)>;

// `path` with "~" and "~user" at its front expanded, absolute, without "." and "..". A relative one counts from
// `current`. No file is looked at.
[[nodiscard]] std::filesystem::path standardizedPath(std::string_view path, const HomeOf& homeOf,
                                                     const std::filesystem::path& current);

// The argument behind the first "--output" as it stands, or kDiagnosticFolder without one. Fails with missingOutputPath
// where none follows, an empty one, or the next option.
[[nodiscard]] Result<std::string_view> diagnosticDestination(std::span<const std::string_view> arguments);

// "843 KB", "1.2 MB", "512 bytes": powers of a thousand, as file managers tell sizes.
[[nodiscard]] std::string byteCountText(std::uint64_t bytes);

using DiagnosticWriter = std::function<void(std::filesystem::path output, Completion<Result<std::filesystem::path>>)>;
enum class Waited { done, tooLong, interrupted };
using DiagnosticPump = std::function<Waited(const std::function<bool()>& done, Duration limit)>;

// Has `write` write a bundle to `output` and waits for it, at most kDiagnosticLimit and until it is interrupted. What
// comes later is lost. At top level only.
[[nodiscard]] Result<std::filesystem::path> awaitDiagnosticBundle(const DiagnosticWriter& write,
                                                                  const std::filesystem::path& output,
                                                                  const DiagnosticPump& pump);

struct DiagnosticJob {
  std::string title;  // the configured one
  HomeOf homeOf;
  std::filesystem::path current;  // the working folder
  bool terminal = false;          // standard error is one, so progress is told without --verbose, too
  DiagnosticWriter write;
  DiagnosticPump pump;
  std::function<void(std::string_view)> out;
  std::function<void(std::string_view)> err;
};

// Gives the exit code: 0, or 1 with a line on standard error. The path of the bundle goes to standard output.
[[nodiscard]] int runDiagnosticJob(std::span<const std::string_view> arguments, const DiagnosticJob& job);

}  // namespace corvane
