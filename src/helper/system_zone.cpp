#include "helper/system_zone.h"

#include "platform/linux/linux_locale.h"

namespace corvane {
namespace {

// The link itself: a new zone is a new link.
struct stat localtimeNow() {
  struct stat state {};
  if (lstat("/etc/localtime", &state) != 0) state = {};
  return state;
}

bool sameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_ctim.tv_sec == b.st_ctim.tv_sec &&
         a.st_ctim.tv_nsec == b.st_ctim.tv_nsec;
}

}  // namespace

Calendar SystemZone::calendar() {
  const auto now = localtimeNow();
  const std::lock_guard lock(mutex_);
  if (!known_ || !sameFile(now, seen_)) {
    calendar_ = LinuxLocale().calendar();
    seen_ = now;
    known_ = true;
  }
  return calendar_;
}

}  // namespace corvane
