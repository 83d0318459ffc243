// Application bundles as lists of files, to be put on the disk or into a vendor's archive.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "sample/catalogue.h"

namespace corvane::sample {

struct BundleFile {
  std::string path;  // relative to the folder that holds the bundle: "Quill.app/Contents/Info.plist"
  std::string bytes;
  mode_t mode = 0644;
};

struct BundleSpec {
  std::string fileName;  // "Quill.app"
  std::string identifier;
  std::string version;
  std::string build;
  PlistFormat format = PlistFormat::xml;
  Executable executable = Executable::runnable;
  std::string team;
  std::string minimumSystem;
  bool storeReceipt = false;
  bool damagedInfo = false;
  bool icon = false;
};

[[nodiscard]] BundleSpec bundleOf(const InstalledApp& app);

// `program` is the small executable that a runnable bundle gets as its own.
[[nodiscard]] std::vector<BundleFile> bundleFiles(const BundleSpec& spec, const std::string& program);

void putBundle(const std::filesystem::path& folder, const std::vector<BundleFile>& files);

}  // namespace corvane::sample
