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

SessionLock::Attempt InstanceLock::take() { return makeAndLock(LOCK_EX | LOCK_NB); }

SessionLock::Attempt InstanceLock::takeExisting() { return openAndLock(O_RDWR, LOCK_EX | LOCK_NB); }

SessionLock::Attempt InstanceLock::takeShared() { return makeAndLock(LOCK_SH | LOCK_NB); }

SessionLock::Attempt InstanceLock::awaitShared() { return makeAndLock(LOCK_SH); }

SessionLock::Attempt InstanceLock::makeAndLock(int operation) {
  if (descriptor_ >= 0) return {};
  std::error_code error;
  std::filesystem::create_directories(path_.parent_path(), error);
  if (error) return {.outcome = Outcome::couldNotMakeFolder, .error = error.message()};
  return openAndLock(O_RDWR | O_CREAT, operation);
}

SessionLock::Attempt InstanceLock::openAndLock(int flags, int operation) {
  if (descriptor_ >= 0) return {};
  const int descriptor = ::open(path_.c_str(), flags | O_CLOEXEC, 0644);
  if (descriptor < 0) return {.outcome = Outcome::couldNotOpen, .error = std::strerror(errno)};
  int code = 0;
  do code = ::flock(descriptor, operation);
  while (code != 0 && errno == EINTR);
  if (code != 0) {
    ::close(descriptor);
    return {.outcome = Outcome::heldByOther};
  }
  descriptor_ = descriptor;
  return {};
}

}  // namespace corvane
