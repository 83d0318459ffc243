#include "core/policies/running_apps_detector.h"

#include <vector>

#include "base/ascii.h"

namespace corvane {

std::optional<std::set<std::string, std::less<>>> RunningAppsDetector::runningAppBundlePathsIfEnumerable() const {
  const auto processes = applications_.list();
  if (!processes) return std::nullopt;
  std::set<std::string, std::less<>> paths;
  for (const auto& process : *processes) {
    if (!process.bundlePath) continue;
    auto path = *process.bundlePath;
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    if (!path.empty()) paths.insert(std::move(path));
  }
  return paths;
}

std::set<std::string, std::less<>> RunningAppsDetector::runningBundleIdentifiers() const {
  std::set<std::string, std::less<>> identifiers;
  for (const auto& process : applications_.list().value_or(std::vector<RunningProcess>()))
    if (process.bundleIdentifier) identifiers.insert(lowercased(*process.bundleIdentifier));
  return identifiers;
}

}  // namespace corvane
