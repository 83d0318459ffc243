// The console user's preferences under the managed ones, as a root program may read them: copied from a checked
// file, and never written.
#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "helper/console_user.h"
#include "platform/posix/file_identity.h"
#include "platform/preference_domains.h"

namespace corvane {

// A preference file is some kilobytes; what is larger is not read.
inline constexpr std::size_t kPreferenceFileLimit = 4U << 20U;

// Reads a file that a less trusted user can replace at any time: the descriptor is opened without following a
// link and without waiting for a pipe, and must then be a regular file of that user (or root) within the limit, which
// nobody of `untrusted` (mode bits) may write to. Absent without an error when there is no file.
[[nodiscard]] Result<std::optional<std::string>> readFileOfUser(const std::filesystem::path& path, uid_t owner,
                                                                mode_t untrusted = 0);

// The managed values choose what root installs and with which options, so their file is held to the rule of the tool
// itself (checkTrustedPath) at each look: where somebody else could write them they are not read.
// Any thread, but `watch`, which never calls back: the helper reads afresh at each request.
class ConsolePreferenceDomains final : public PreferenceDomains {
 public:
  struct Paths {
    std::filesystem::path managed;
    std::function<std::optional<ConsoleUser>()> consoleUser;
    std::function<std::filesystem::path(const std::filesystem::path& home)> userFile;
    // The system's root, where the check of the folders ends: `managed` lies in "Library/Managed Preferences" below it.
    std::filesystem::path root = managed.parent_path().parent_path().parent_path();
  };
  // `log` takes a sentence about a file that cannot be used, once for each state of it.
  ConsolePreferenceDomains(Paths paths, std::function<void(std::string_view)> log);

  [[nodiscard]] DomainSnapshot user() const override;
  [[nodiscard]] DomainSnapshot managed() const override;
  // Always fails: the user's preferences are the user's.
  Status changeUser(const std::function<void(PlistDict&)>& change) override;
  Lease watch(std::function<void()> changed) override;

 private:
  struct File {
    std::filesystem::path path;
    std::optional<FileIdentity> identity;
    std::string refusal;  // why it was not read, though it is there
    DomainSnapshot snapshot;
  };
  using Reading = Result<std::optional<std::string>>;
  DomainSnapshot refresh(File& file, const std::filesystem::path& path, Status trusted,
                         const std::function<Reading()>& read) const;

  Paths paths_;
  std::function<void(std::string_view)> log_;
  mutable std::mutex mutex_;
  mutable File user_;
  mutable File managed_;
  mutable std::uint64_t nextVersion_ = 1;
};

}  // namespace corvane
