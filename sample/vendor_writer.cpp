#include "sample/vendor_writer.h"

#include <fmt/format.h>

#include <algorithm>

#include "sample/bundle_writer.h"
#include "sample/files.h"
#include "sample/label_writer.h"
#include "sample/tar_writer.h"

namespace corvane::sample {

namespace {

// Longer than any sensible time limit of a check.
constexpr std::string_view kHangMilliseconds = "3600000";
constexpr std::string_view kSlowMilliseconds = "1500";
constexpr std::string_view kForeignTeam = "F0RE1GNTM9";

void putPages(const std::filesystem::path& vendors, const LabelSpec& label) {
  const auto folder = vendors / label.label;
  switch (label.source) {
    case VersionSource::json:
      put(folder / "latest.json",
          fmt::format("{{\"product\": \"{}\", \"latest\": {{\"version\": \"{}\", \"beta\": false}}}}\n", label.label,
                      label.latest));
      return;
    case VersionSource::html:
      put(folder / "index.html",
          fmt::format("<html><body><h1>{}</h1><p>Version {}</p><p>Version 0.1</p></body></html>\n", label.name,
                      label.latest));
      return;
    case VersionSource::feed:
      put(folder / "feed.xml",
          fmt::format("<?xml version=\"1.0\"?>\n<rss><channel>\n<item><enclosure shortVersion=\"{}\" "
                      "length=\"1\"/></item>\n<item><enclosure shortVersion=\"0.1\"/></item>\n</channel></rss>\n",
                      label.latest));
      return;
    case VersionSource::release:
      put(vendors / ".redirect/sample" / label.label / "releases/latest",
          fmt::format("/sample/{0}/releases/tag/v{1}", label.label, label.latest));
      put(vendors / "sample" / label.label / "releases/tag" / fmt::format("v{}", label.latest), "release\n");
      return;
    case VersionSource::architecture:
      put(folder / "version-arm64.txt", fmt::format("{}\n", label.latest));
      put(folder / "version-x86_64.txt", fmt::format("{}\n", label.latest));
      return;
    case VersionSource::garbage:
      put(folder / "version.txt", "<!DOCTYPE html><html><head><title>503 Service Unavailable</title></head></html>\n");
      return;
    case VersionSource::fixed:
    case VersionSource::none:
    case VersionSource::broken:
      return;
    case VersionSource::slow:
      put(vendors / ".delay" / label.label / "version.txt", kSlowMilliseconds);
      break;
    case VersionSource::hang:
      put(vendors / ".delay" / label.label / "version.txt", kHangMilliseconds);
      break;
    case VersionSource::page:
    case VersionSource::down:
      break;
  }
  put(folder / "version.txt", fmt::format("{}\n", label.latest));
}

BundleSpec deliveredBundle(const LabelSpec& label) {
  const auto fileName = label.bundleFileName();
  const auto apps = installedApplications();
  const auto installed =
      std::ranges::find_if(apps, [&](const InstalledApp& app) { return fileName == std::string(app.name) + ".app"; });
  BundleSpec bundle = installed == apps.end()
                          ? BundleSpec{.fileName = fileName, .identifier = fmt::format("org.sample.{}", label.label)}
                          : bundleOf(*installed);
  const bool byBuild = label.versionKey == "CFBundleVersion";
  bundle.version = byBuild ? label.latestShort : label.latest;
  bundle.build = byBuild ? label.latest : "";
  bundle.team = label.delivery == Delivery::foreignTeam ? kForeignTeam : label.team;
  bundle.minimumSystem = label.minimumSystem;
  bundle.storeReceipt = bundle.damagedInfo = false;
  if (bundle.executable == Executable::none) bundle.executable = Executable::runnable;
  if (label.delivery == Delivery::wrongName) bundle.fileName = "Renamed " + fileName;
  return bundle;
}

}  // namespace

void putVendor(const std::filesystem::path& vendors, const LabelSpec& label, const std::string& program) {
  putPages(vendors, label);
  const auto download = vendors / downloadPath(label);
  if (label.delivery == Delivery::missing || label.source == VersionSource::down) return;
  if (label.delivery == Delivery::errorPage) {
    put(download, "Your network requires you to sign in before you can go on.\n");
    return;
  }
  // What a package installs is laid out from the system root, an image holds the bundle alone.
  const bool package = label.type == "pkg";
  TarWriter tar;
  if (package)
    tar.file(
        "PackageInfo",
        fmt::format("{} {} {}\n", label.packageID.empty() ? label.label : label.packageID, label.latest, label.team),
        0644);
  if (label.commandLineOnly) {
    tar.file(fmt::format("usr/local/bin/{}", label.label), fmt::format("#!/bin/sh\necho {}\n", label.latest), 0755);
  } else {
    const auto bundle = deliveredBundle(label);
    auto files = bundleFiles(bundle, program);
    if (!label.updateTool.empty())
      files.push_back(
          {std::string(label.updateTool.substr(label.updateTool.find('/', 1) + 1)), updateToolScript(label), 0755});
    const auto prefix = package ? "Applications/" : label.folderName.empty() ? "" : std::string(label.folderName) + "/";
    for (const auto& file : files) tar.file(prefix + file.path, file.bytes, file.mode);
  }
  put(download, tar.finish());
}

}  // namespace corvane::sample
