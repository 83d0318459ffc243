#include "platform/posix/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace corvane {

InstanceLock::~InstanceLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

SessionLock::Attempt InstanceLock::take() {
  if (descriptor_ >= 0) return {};
  std::error_code error;
  std::filesystem::create_directories(path_.parent_path(), error);
  if (error) return {.outcome = Outcome::couldNotMakeFolder, .error = error.message()};
  return openAndLock(O_RDWR | O_CREAT);
}

SessionLock::Attempt InstanceLock::takeExisting() {
  if (descriptor_ >= 0) return {};
  return openAndLock(O_RDWR);
}

SessionLock::Attempt InstanceLock::openAndLock(int flags) {
  const int descriptor = ::open(path_.c_str(), flags | O_CLOEXEC, 0644);
  if (descriptor < 0) return {.outcome = Outcome::couldNotOpen, .error = std::strerror(errno)};
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    ::close(descriptor);
    return {.outcome = Outcome::heldByOther};
  }
  descriptor_ = descriptor;
  return {};
}

}  // namespace corvane
