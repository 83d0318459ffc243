// A throw-away system root with bundles, labels and receipts, and a sink that keeps what was logged.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/plist.h"
#include "core/logging/logging_service.h"
#include "core/places.h"
#include "support/mach_o_builder.h"

namespace corvane::testing {

class KeptLog : public LogSink {
 public:
  void write(LogLevel level, std::string_view message) override {
    const std::scoped_lock lock(mutex_);
    if (level != LogLevel::verbose) lines.emplace_back(message);
  }
  [[nodiscard]] std::size_t naming(std::string_view part) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(lines, [&](const std::string& line) { return line.find(part) != std::string::npos; }));
  }
  std::vector<std::string> lines;

 private:
  std::mutex mutex_;
};

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
    auto name = (std::filesystem::temp_directory_path() / "corvane-discovery-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::filesystem::filesystem_error("mkdtemp", std::error_code());
    root = std::filesystem::canonical(name);
    constants = {.root = root, .home = root / "Users/sam"};
    std::filesystem::create_directories(root / "Applications/Utilities");
    std::filesystem::create_directories(constants.home / "Applications");
  }
  ~MacFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
  }
  MacFolder(const MacFolder&) = delete;
  MacFolder& operator=(const MacFolder&) = delete;

  // `path` as the Mac sees it; returns it under the root.
  std::filesystem::path write(std::string_view path, std::string_view bytes) const {
    const auto file = root / path.substr(1);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file;
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

  // The label's file bears the name of its first pattern.
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

  std::filesystem::path root;
  CorvaneConstants constants;
};

}  // namespace corvane::testing
