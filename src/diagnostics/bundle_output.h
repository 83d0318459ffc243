// Where the zip goes, and how it gets there.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/calendar.h"
#include "base/error.h"

namespace corvane {

// Tests of one name after the other before a folder counts as full of bundles of the same second.
inline constexpr int kBundleNameTests = 1000;

// "Corvane-Diagnostic-2026-11-22-210442", by the local clock.
[[nodiscard]] std::string bundleName(Date now, const Calendar& calendar);

// A folder in which a free name is found, or one file that is replaced.
struct BundleOutput {
  std::filesystem::path folder;
  std::optional<std::filesystem::path> file;
};

// `output`, when given, names the zip itself where its extension is "zip" in any case, otherwise a folder, which is
// made when nothing is there. Without it the zip goes to `desktop`. Fails with the errors of DiagnosticBundleService.
// Any thread.
[[nodiscard]] Result<BundleOutput> resolveOutput(const std::optional<std::filesystem::path>& output,
                                                 const std::optional<std::filesystem::path>& desktop);

// Puts the finished `zip` there, readable for its owner alone, and gives its path: "<name>.zip", or the first free one
// of
// "<name>-1.zip" to "<name>-999.zip". Never writes through a link, never over another bundle, and leaves nothing behind
// when it fails, as on a full disk. Any thread.
[[nodiscard]] Result<std::filesystem::path> deliver(const std::filesystem::path& zip, const BundleOutput& output,
                                                    const std::string& name);

}  // namespace corvane
