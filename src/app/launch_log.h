// The line that tells how a launch went.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "platform/helper_registration.h"

namespace corvane {

struct LaunchFacts {
  std::optional<std::string> shortVersion;
  std::optional<std::string> build;
  HelperStatus helperStatus = HelperStatus::unknown;
  bool silentLaunch = false;
  bool backgroundLaunch = false;
  bool showDashboard = false;
  uid_t uid = 0;
};

// Behind the owner's name "Corvane".
[[nodiscard]] std::string launchLine(const LaunchFacts& facts);

}  // namespace corvane
