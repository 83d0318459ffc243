#include "sample/bundle_writer.h"

#include "sample/files.h"
#include "sample/icon_artist.h"
#include "sample/mach_o_builder.h"

namespace corvane::sample {

namespace {

constexpr auto kIconName = "AppIcon";
constexpr std::size_t kCodeBytes = 8192;  // of a signed executable

std::string executableName(const BundleSpec& spec) { return spec.fileName.substr(0, spec.fileName.rfind('.')); }

PlistDict infoOf(const BundleSpec& spec) {
  PlistDict info{
      {"CFBundleIdentifier", spec.identifier},
      {"CFBundleName", executableName(spec)},
      {"CFBundleExecutable", executableName(spec)},
      {"CFBundlePackageType", "APPL"},
      {"CFBundleInfoDictionaryVersion", "6.0"},
      {"CFBundleShortVersionString", spec.version},
      {"CFBundleVersion", spec.build.empty() ? spec.version : spec.build},
      {"NSHighResolutionCapable", true},
      {"CFBundleSupportedPlatforms", PlistArray{PlistValue("MacOSX")}},
  };
  if (!spec.minimumSystem.empty()) info["LSMinimumSystemVersion"] = spec.minimumSystem;
  if (spec.icon) info["CFBundleIconFile"] = kIconName;
  return info;
}

std::string infoBytes(const BundleSpec& spec) {
  auto bytes = writePlist(infoOf(spec), spec.format).value();
  // Torn in the middle, as a full disk leaves a file.
  if (spec.damagedInfo) bytes.resize(bytes.size() / 2);
  return bytes;
}

std::string machO(mach_o::Architecture architecture, const BundleSpec& spec) {
  std::vector<mach_o::Signing> signings;
  if (!spec.team.empty()) signings.push_back({.identifier = spec.identifier, .team = spec.team});
  return mach_o::thin(signings, {.architecture = architecture, .codeBytes = kCodeBytes});
}

std::string executableBytes(const BundleSpec& spec, const std::string& program) {
  using enum mach_o::Architecture;
  switch (spec.executable) {
    case Executable::runnable:
      return program;
    case Executable::thinArm64:
      return machO(arm64, spec);
    case Executable::thinIntel:
      return machO(x86_64, spec);
    case Executable::universal:
      return mach_o::universal({{x86_64, machO(x86_64, spec)}, {arm64, machO(arm64, spec)}});
    case Executable::none:
      break;
  }
  return {};
}

}  // namespace

BundleSpec bundleOf(const InstalledApp& app) {
  return {.fileName = std::string(app.name) + ".app",
          .identifier = std::string(app.identifier),
          .version = std::string(app.version),
          .build = std::string(app.build),
          .format = app.format,
          .executable = app.executable,
          .team = std::string(app.team),
          .minimumSystem = {},
          .storeReceipt = app.storeReceipt,
          .damagedInfo = app.damagedInfo,
          .icon = app.icon};
}

std::vector<BundleFile> bundleFiles(const BundleSpec& spec, const std::string& program) {
  const auto contents = spec.fileName + "/Contents/";
  std::vector<BundleFile> files{{contents + "Info.plist", infoBytes(spec)}, {contents + "PkgInfo", "APPL????"}};
  if (spec.executable != Executable::none)
    files.push_back({contents + "MacOS/" + executableName(spec), executableBytes(spec, program), 0755});
  // A main executable that is no Mach-O has its signature in files beside it.
  if (spec.executable == Executable::runnable && !spec.team.empty())
    files.push_back({contents + "_CodeSignature/CodeDirectory",
                     mach_o::codeDirectory({.identifier = spec.identifier, .team = spec.team}, program)});
  files.push_back({contents + "Resources/release.txt", spec.version + "\n"});
  if (spec.icon) files.push_back({contents + "Resources/" + kIconName + ".icns", iconFor(executableName(spec))});
  if (spec.storeReceipt) files.push_back({contents + "_MASReceipt/receipt", "store receipt\n"});
  return files;
}

void putBundle(const std::filesystem::path& folder, const std::vector<BundleFile>& files) {
  for (const auto& file : files) put(folder / file.path, file.bytes, file.mode);
}

}  // namespace corvane::sample
