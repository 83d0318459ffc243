// A bundle in open fields.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/own_bundle.h"

namespace corvane {

class ScriptedOwnBundle final : public OwnBundle {
 public:
  std::filesystem::path bundlePath = "/Applications/Corvane.app";
  std::optional<std::string> bundleShortVersion = "4.0.0";
  std::optional<std::string> bundleVersion = "400";
  std::string bundleIdentifier = "org.corvane.Corvane";
  std::optional<std::string> digest = "a1";

  [[nodiscard]] std::filesystem::path path() const override { return bundlePath; }
  [[nodiscard]] std::optional<std::string> shortVersion() const override { return bundleShortVersion; }
  [[nodiscard]] std::optional<std::string> version() const override { return bundleVersion; }
  [[nodiscard]] std::string identifier() const override { return bundleIdentifier; }
  [[nodiscard]] std::optional<std::string> helperDigest() const override { return digest; }
};

}  // namespace corvane
