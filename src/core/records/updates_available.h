// What is pending, for who is not looking at the program.
#pragma once

#include <cstdint>

namespace corvane {

struct UpdatesAvailable {
  std::int64_t open = 0;                    // of open applications: the user has to act
  std::int64_t total = 0;                   // with the closed ones
  bool closedAppsHandledElsewhere = false;  // another process patches the closed ones
  bool closedAppsWaitForACPower = false;
  friend bool operator==(const UpdatesAvailable&, const UpdatesAvailable&) = default;
};

}  // namespace corvane
