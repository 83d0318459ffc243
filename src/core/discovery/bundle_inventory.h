// Which bundles lie in the folders of applications: paths only, no file inside a bundle is opened. Scan
// once, match many labels against it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/error.h"
#include "core/logging/logging_service.h"
#include "core/places.h"

namespace corvane {

// What a scan leaves out.
struct ScanRules {
  bool ignoreExternalDrives = false;      // bundles on other volumes than the boot volume
  std::vector<std::string> ignoredPaths;  // substrings of absolute paths, beside the four fixed ones
};

// Bundles that no administrator wants updated, by a substring of their path: helpers inside app containers
// of daemons, copies that JAMF Composer keeps, and the web applications that Chrome and Edge install.
inline constexpr std::string_view kIgnoredPathDefaults[] = {"/Daemon Containers/", "/JAMF/Composer/",
                                                            "/Chrome Apps.localized/", "/Edge Apps.localized/"};

// Whether the absolute path, with a "/" behind it, holds one of the substrings or of the fixed defaults,
// in either case of ASCII letters. Empty substrings fit nothing.
[[nodiscard]] bool isIgnoredPath(std::string_view path, const std::vector<std::string>& substrings);

struct InstalledBundle {
  std::string path;         // absolute, the root's own path in front
  std::string logicalPath;  // as the Mac sees it, "/Applications/Quill.app"
  bool inHome = false;      // lies in the user's own folder of applications
  [[nodiscard]] std::string_view fileName() const { return std::string_view(path).substr(path.rfind('/') + 1); }
};

// Folders below a folder of applications that are looked into: "/Applications/Vendor/Suite/Quill.app" is
// found, deeper ones are not. No bundle is ever looked into.
inline constexpr int kScanDepth = 2;

// Reading from several threads is fine.
class BundleInventory {
 public:
  // Scans /Applications (with /Applications/Utilities in it) under the root and ~/Applications. A folder that
  // cannot be read is skipped with a log line; a missing one is no news. A linked bundle counts at the place of
  // its link unless the same bundle was found without one; linked folders are not followed, except where
  // one of the three itself is a link. A name that is no UTF-8 is skipped with a log line. External is what lies on
  // neither the volume of the root, of its /Applications nor of the home, or resolves to a place under /Volumes. Fails,
  // with errno as code, when /Applications is there but cannot be read, for then nothing is known and everything would
  // look missing.
  [[nodiscard]] static Result<BundleInventory> scan(const CorvaneConstants& constants, const ScanRules& rules,
                                                    const Logger& logger);

  // Sorted by path.
  [[nodiscard]] const std::vector<InstalledBundle>& bundles() const { return bundles_; }

  // The bundles with this file name, compared as a Mac's disk compares names; in path order.
  [[nodiscard]] std::vector<const InstalledBundle*> named(std::string_view fileName) const;

  // SHA-256 over the sorted logical paths, in hexadecimal. Versions do not count.
  [[nodiscard]] std::string fingerprint() const;

 private:
  std::vector<InstalledBundle> bundles_;
  std::unordered_multimap<std::string, std::size_t> byName_;
};

}  // namespace corvane
