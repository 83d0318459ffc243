// The bundle around the running program, told from where its executable lies.
#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "base/plist.h"
#include "platform/own_bundle.h"
#include "platform/posix/file_identity.h"

namespace corvane {

// Started from outside a bundle (a build folder), path() is the executable's folder, both versions are absent
// and the identifier is empty. Digests are SHA-256 in lower-case hexadecimal.
class ExecutableBundle final : public OwnBundle {
 public:
  explicit ExecutableBundle(const std::filesystem::path& executable = runningExecutable());

  // What the kernel says was started; empty when it does not say.
  [[nodiscard]] static std::filesystem::path runningExecutable();

  [[nodiscard]] std::filesystem::path path() const override { return path_; }
  [[nodiscard]] std::optional<std::string> shortVersion() const override;
  [[nodiscard]] std::optional<std::string> version() const override;
  [[nodiscard]] std::string identifier() const override;
  [[nodiscard]] std::optional<std::string> helperDigest() const override;

 private:
  [[nodiscard]] std::optional<std::string> info(std::string_view key) const;

  std::filesystem::path path_;
  mutable std::mutex mutex_;
  mutable std::optional<FileIdentity> infoIdentity_;
  mutable PlistDict info_;
  mutable std::optional<FileIdentity> helperIdentity_;
  mutable std::optional<std::string> helperDigest_;
};

// Absent when the file cannot be read to its end.
[[nodiscard]] std::optional<std::string> sha256OfFile(const std::filesystem::path& path);

}  // namespace corvane
