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
// link and without waiting for a pipe, and must then be a regular file of that user (or root) within the limit.
// Absent without an error when there is no file.
[[nodiscard]] Result<std::optional<std::string>> readFileOfUser(const std::filesystem::path& path, uid_t owner);

// Any thread, but `watch`, which never calls back: the helper reads afresh at each request.
class ConsolePreferenceDomains final : public PreferenceDomains {
 public:
  struct Paths {
    std::filesystem::path managed;
    std::function<std::optional<ConsoleUser>()> consoleUser;
    std::function<std::filesystem::path(const std::filesystem::path& home)> userFile;
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
    DomainSnapshot snapshot;
  };
  DomainSnapshot refresh(File& file, const std::filesystem::path& path, uid_t owner) const;

  Paths paths_;
  std::function<void(std::string_view)> log_;
  mutable std::mutex mutex_;
  mutable File user_;
  mutable File managed_;
  mutable std::uint64_t nextVersion_ = 1;
};

}  // namespace corvane
