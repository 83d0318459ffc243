// Which applications run, by their bundles.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "platform/running_applications.h"

namespace corvane {

// Main thread, as the port.
class RunningAppsDetector {
 public:
  explicit RunningAppsDetector(const RunningApplications& applications) : applications_(applications) {}

  // The bundle paths of all running applications, of every user, without a slash at the end. Absent when the
  // processes cannot be listed, which must never be read as nothing running.
  [[nodiscard]] std::optional<std::set<std::string, std::less<>>> runningAppBundlePathsIfEnumerable() const;

  // The identifiers of the running applications' bundles, in lower case; none when the processes cannot be listed.
  [[nodiscard]] std::set<std::string, std::less<>> runningBundleIdentifiers() const;

 private:
  const RunningApplications& applications_;
};

}  // namespace corvane
