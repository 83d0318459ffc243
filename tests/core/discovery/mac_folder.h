// A throw-away system root with bundles, labels and receipts.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/plist.h"
#include "core/places.h"
#include "sample/mach_o_builder.h"
#include "support/temporary_folder.h"

namespace corvane::testing {

struct BundleRecipe {
  std::string shortVersion = "1.0";
  std::string version = "100";
  std::string team;  // empty: the executable is a script without a signature
  PlistFormat format = PlistFormat::xml;
  PlistDict extra = {};
  bool fromStore = false;
};

class MacFolder {
 public:
  MacFolder() {
    std::filesystem::create_directories(root / "Applications/Utilities");
    std::filesystem::create_directories(constants.home / "Applications");
  }

  std::filesystem::path write(std::string_view path, std::string_view bytes) const {
    return folder_.write(path.substr(1), bytes);
  }

  std::filesystem::path bundle(std::string_view path, const BundleRecipe& recipe = {}) const {
    PlistDict info = recipe.extra;
    info["CFBundleIdentifier"] = "org.example.app";
    info["CFBundleExecutable"] = "main";
    if (!recipe.shortVersion.empty()) info["CFBundleShortVersionString"] = recipe.shortVersion;
    if (!recipe.version.empty()) info["CFBundleVersion"] = recipe.version;
    const auto contents = std::string(path) + "/Contents/";
    write(contents + "Info.plist", writePlist(PlistValue(info), recipe.format).value());
    write(contents + "MacOS/main", recipe.team.empty()
                                       ? std::string("#!/bin/sh\n")
                                       : mach_o::thin({{.identifier = "org.example.app", .team = recipe.team}}));
    if (recipe.fromStore) write(contents + "_MASReceipt/receipt", "receipt");
    return root / path.substr(1);
  }

  void label(std::string_view head, std::string_view body) const {
    const auto file = std::string(head.substr(0, head.find('|')));
    write("/Library/Application Support/Corvane/fragments/labels/" + file + ".sh",
          std::string(head) + ")\n" + std::string(body) + "\n    ;;\n");
  }

  void receipt(const std::string& packageID, const std::string& version, const std::string& prefix) const {
    write("/var/db/receipts/" + packageID + ".plist",
          writePlist(PlistValue(PlistDict{
                         {"PackageIdentifier", packageID}, {"PackageVersion", version}, {"InstallPrefixPath", prefix}}),
                     PlistFormat::binary)
              .value());
  }

 private:
  TemporaryFolder folder_;

 public:
  std::filesystem::path root = folder_.path();
  CorvaneConstants constants{.root = root, .home = root / "Users/sam"};
};

}  // namespace corvane::testing
