// The machine's time zone for the log of a program that runs for months: people travel, and clocks are set anew.
#pragma once

#include <sys/stat.h>

#include <mutex>

#include "base/calendar.h"

namespace corvane {

// Any thread. The zone is looked up again only after /etc/localtime was replaced or changed.
class SystemZone {
 public:
  [[nodiscard]] Calendar calendar();

 private:
  std::mutex mutex_;
  struct stat seen_ {};
  Calendar calendar_ = Calendar::utc();
  bool known_ = false;
};

}  // namespace corvane
