// The application bundle that this program was started from.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace corvane {

// Any thread; answers from one small file each, kept until that file changes.
class OwnBundle {
 public:
  virtual ~OwnBundle() = default;
  [[nodiscard]] virtual std::filesystem::path path() const = 0;               // ".../Corvane.app"
  [[nodiscard]] virtual std::optional<std::string> shortVersion() const = 0;  // CFBundleShortVersionString
  [[nodiscard]] virtual std::optional<std::string> version() const = 0;       // CFBundleVersion
  [[nodiscard]] virtual std::string identifier() const = 0;                   // CFBundleIdentifier
  [[nodiscard]] std::filesystem::path helper() const { return path() / "Contents/Helpers/CorvaneRootHelper"; }
  // Digest of the helper's binary inside the bundle now; absent when there is none.
  [[nodiscard]] virtual std::optional<std::string> helperDigest() const = 0;
};

}  // namespace corvane
