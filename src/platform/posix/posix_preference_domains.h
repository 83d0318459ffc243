// A preference domain as two property-list files: the user's own and the managed one over it. Knows no key.
#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/file_identity.h"
#include "platform/preference_domains.h"

namespace corvane {

// Calls back on the main thread, at most once a turn, after something in the folder changed.
using FolderWatch = std::function<Lease(const std::filesystem::path& folder, std::function<void()> changed)>;

// A read costs one stat while the file stands unchanged. Writers of all programs exclude one another by a lock
// on the neighbour file ".<name>.lock", which stays; readers need none, since files are replaced by rename.
class PosixPreferenceDomains final : public PreferenceDomains {
 public:
  struct Paths {
    std::filesystem::path user;
    std::filesystem::path managed;
  };

  // `log` takes a finished sentence about a damaged or unreadable file, on the thread that met it, once for
  // each state of the file. Without `watchFolder`, `watch` never calls back.
  PosixPreferenceDomains(Paths paths, std::function<void(std::string_view)> log, FolderWatch watchFolder = nullptr);

  [[nodiscard]] DomainSnapshot user() const override;
  [[nodiscard]] DomainSnapshot managed() const override;

  // Makes the folder (mode 0700) and the file (0600) when they are missing; an existing file keeps its mode.
  // `change` may read the domain but not change it. A damaged file is renamed to
  // "<name>.damaged-<date>" first; a file that exists and cannot be read is left alone and fails the change.
  Status changeUser(const std::function<void(PlistDict&)>& change) override;

  Lease watch(std::function<void()> changed) override;

 private:
  struct File {
    std::filesystem::path path;
    std::optional<FileIdentity> identity;
    bool trusted = false;     // the identity alone tells that nothing changed
    DomainSnapshot snapshot;  // no values before the first look
  };
  struct Loaded {
    PlistDict values;
    PlistFormat format = PlistFormat::binary;
    std::string trouble;  // empty when the file is absent or sound
    bool damaged = false;
    std::optional<Error> unreadable;
  };

  [[nodiscard]] static Loaded load(const std::filesystem::path& path);
  DomainSnapshot refresh(File& file) const;
  void adopt(File& file, PlistDict values) const;
  Status replaceUser(const Loaded& old, PlistDict values);
  [[nodiscard]] std::uint64_t foreignChanges() const;

  std::function<void(std::string_view)> log_;
  FolderWatch watchFolder_;
  mutable std::mutex mutex_;
  mutable File user_;
  mutable File managed_;
  mutable std::uint64_t nextVersion_ = 1;
  mutable std::uint64_t foreignChanges_ = 0;  // how often a file was found changed by somebody else
};

}  // namespace corvane
