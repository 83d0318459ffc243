#include "diagnostics/bundle_output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "base/ascii.h"
#include "core/discovery/folder_reader.h"
#include "diagnostics/descriptor_bytes.h"
#include "diagnostics/diagnostic_bundle_service.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

std::unexpected<Error> unavailable(const fs::path& path) {
  return std::unexpected(DiagnosticBundleService::Error::outputUnavailable(path.string()));
}

// Fails, as it must, for a link that leads nowhere.
bool makeFolders(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  return !error;
}

// Takes `target`, an empty file; whether all of it arrived.
bool copyInto(int target, const fs::path& zip) {
  const Descriptor source(::open(zip.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  bool whole = source.get() >= 0;
  std::string buffer(kCopyPiece, '\0');
  while (whole) {
    const auto got = readUpTo(source.get(), buffer.data(), buffer.size());
    whole = got && writeAll(target, {buffer.data(), *got});
    if (got.value_or(0) < buffer.size()) break;
  }
  // Some file systems tell of a full disk only here.
  return ::close(target) == 0 && whole;
}

Result<fs::path> deliverAs(const fs::path& zip, const fs::path& file) {
  auto pattern = (file.parent_path() / ".corvane-diagnostic-XXXXXX").string();
  const int target = ::mkostemp(pattern.data(), O_CLOEXEC);
  if (target < 0) return unavailable(file);
  // What is there is replaced in one step: a link itself, not what it leads to; a folder stays and is a failure.
  if (copyInto(target, zip) && ::rename(pattern.c_str(), file.c_str()) == 0) return file;
  ::unlink(pattern.c_str());
  return unavailable(file);
}

Result<fs::path> deliverInto(const fs::path& zip, const fs::path& folder, const std::string& name) {
  for (int test = 0; test < kBundleNameTests; ++test) {
    const auto file = folder / (test == 0 ? name + ".zip" : fmt::format("{}-{}.zip", name, test));
    const int target = ::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (target < 0 && errno == EEXIST) continue;
    if (target < 0) break;
    if (copyInto(target, zip)) return file;
    ::unlink(file.c_str());
    break;
  }
  return unavailable(folder);
}

}  // namespace

std::string bundleName(Date now, const Calendar& calendar) {
  // "2026-11-22T21:04:42+01:00"
  const auto text = calendar.iso8601(now);
  return "Corvane-Diagnostic-" + text.substr(0, 10) + "-" + text.substr(11, 2) + text.substr(14, 2) +
         text.substr(17, 2);
}

Result<BundleOutput> resolveOutput(const std::optional<fs::path>& output, const std::optional<fs::path>& desktop) {
  if (!output) {
    if (!desktop) return std::unexpected(DiagnosticBundleService::Error::desktopUnavailable());
    return BundleOutput{.folder = *desktop};
  }
  if (lowercased(output->extension().string()) == ".zip") {
    if (!makeFolders(output->parent_path())) return unavailable(*output);
    return BundleOutput{.folder = output->parent_path(), .file = *output};
  }
  std::error_code error;
  if (!fs::exists(*output, error) && !makeFolders(*output)) return unavailable(*output);
  if (!fs::is_directory(*output, error) || ::access(output->c_str(), W_OK) != 0) return unavailable(*output);
  return BundleOutput{.folder = *output};
}

Result<fs::path> deliver(const fs::path& zip, const BundleOutput& output, const std::string& name) {
  return output.file ? deliverAs(zip, *output.file) : deliverInto(zip, output.folder, name);
}

}  // namespace corvane
