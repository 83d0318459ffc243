// The session's lock as an advisory lock on a file. What follows from losing is not decided here.
#pragma once

#include <filesystem>
#include <utility>

#include "platform/session_lock.h"

namespace corvane {

// Children do not inherit the lock. The object belongs to main, so that it dies last. Folders are made with
// mode 0755, the file with 0644.
class InstanceLock final : public SessionLock {
 public:
  explicit InstanceLock(std::filesystem::path path) : path_(std::move(path)) {}
  ~InstanceLock() override;
  InstanceLock(const InstanceLock&) = delete;
  InstanceLock& operator=(const InstanceLock&) = delete;

  [[nodiscard]] Attempt take() override;
  [[nodiscard]] Attempt takeExisting() override;
  [[nodiscard]] Attempt takeShared() override;
  [[nodiscard]] Attempt awaitShared() override;
  [[nodiscard]] const std::filesystem::path& path() const override { return path_; }

 private:
  [[nodiscard]] Attempt makeAndLock(int operation);
  [[nodiscard]] Attempt openAndLock(int flags, int operation);

  std::filesystem::path path_;
  int descriptor_ = -1;
};

}  // namespace corvane
