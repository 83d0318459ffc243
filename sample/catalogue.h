// What the sample Mac holds, as data: the applications that are installed and the labels that know them.
// Nothing here touches the disk.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/plist.h"

namespace corvane::sample {

// The bundle's main executable.
enum class Executable {
  runnable,   // can be opened and closed here; its signature lies beside it
  thinArm64,  // a signed Mach-O, which no kernel here starts
  thinIntel,
  universal,
  none  // the bundle names one that is not there
};

// Folders are relative to the system root; "~" stands for the sample user's home.
struct InstalledApp {
  std::string_view name;  // of the bundle, without ".app"
  std::string_view identifier;
  std::string_view version;
  std::string_view build = "";  // as the short version when empty
  std::string_view folder = "Applications";
  PlistFormat format = PlistFormat::xml;
  Executable executable = Executable::runnable;
  std::string_view team = "";  // unsigned when empty
  bool storeReceipt = false;
  bool damagedInfo = false;
  bool icon = true;
};

// How a label learns the latest version, and how that goes wrong.
enum class VersionSource {
  page,          // a plain text page
  json,          // a member of a JSON page
  html,          // a word in an HTML page
  feed,          // an attribute in an XML feed
  release,       // the redirect of a release page
  architecture,  // a page of its own for each processor
  fixed,         // a literal in the label
  none,          // not set: only the download tells
  hang,          // waits for a page that never comes
  garbage,       // an error page taken for a version
  broken,        // fragments of text: ".0"
  down,          // a vendor that refuses connections
  slow           // a page that takes its time
};

// Of the parts of a download that can be wrong.
enum class Delivery { sound, missing, foreignTeam, wrongName, errorPage };

struct LabelSpec {
  std::string_view label;
  std::string_view name;    // display name; the bundle is "<name>.app" unless `appName` says otherwise
  std::string_view latest;  // what the vendor offers, in the form of `versionKey`
  std::string_view team;
  VersionSource source = VersionSource::page;
  std::string_view type = "dmg";
  std::string_view alias = "";    // a second pattern of the head
  std::string_view file = "";     // file name without ".sh" when it is not the label
  std::string_view appName = "";  // literal value of appName
  std::string_view folderName = "";
  std::string_view packageID = "";
  std::string_view versionKey = "";
  std::string_view latestShort = "";  // short version of the download when the key is another one
  std::string_view blockingProcesses = "";
  std::string_view updateTool = "";
  std::string_view targetDir = "";
  std::string_view minimumSystem = "";
  std::string_view customVersion = "";  // body of appCustomVersion
  Delivery delivery = Delivery::sound;
  bool commandLineOnly = false;  // the package holds a program and no bundle

  [[nodiscard]] std::string bundleFileName() const;  // "Quill.app"
};

[[nodiscard]] std::span<const InstalledApp> installedApplications();
[[nodiscard]] std::span<const LabelSpec> labelCatalogue();

}  // namespace corvane::sample
