#include "core/policies/running_bundles.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/ascii.h"
#include "core/policies/running_apps_detector.h"

namespace corvane {

std::optional<RunningBundles> RunningBundles::of(const RunningApplications& applications) {
  const RunningAppsDetector detector(applications);
  auto paths = detector.runningAppBundlePathsIfEnumerable();
  if (!paths) return std::nullopt;
  return RunningBundles{.paths = std::move(*paths), .identifiers = detector.runningBundleIdentifiers()};
}

bool RunningBundles::holds(const AppInfo& app) const {
  const auto path = app.appPath.value_or("");
  const auto identifier = lowercased(app.packageID.value_or(""));
  return (!path.empty() && paths.contains(path)) || (!identifier.empty() && identifiers.contains(identifier));
}

std::optional<RunningBundles::Objection> RunningBundles::objection(const AppInfo& app) const {
  if (!app.isInstalled()) return std::nullopt;
  const auto path = app.appPath.value_or("");
  const auto identifier = lowercased(app.packageID.value_or(""));
  if (path.empty() && identifier.empty())
    return Objection{.text = "no appPath or packageID on file, cannot certify the app is closed",
                     .nothingOnFile = true};
  if (!holds(app)) return std::nullopt;
  const bool byPath = !path.empty() && paths.contains(path);
  return Objection{.text = (byPath ? path : "bundle ID " + identifier) + " is currently running"};
}

bool backgroundListsAllow(const Label& label, const CorvaneConfiguration& config) {
  const auto holds = [&](const std::vector<std::string>& list) {
    return std::ranges::find(list, label.text) != list.end();
  };
  const auto& allowed = config.backgroundPatchClosedAppsAllowList;
  return !holds(config.backgroundPatchClosedAppsBlockList) && (allowed.empty() || holds(allowed));
}

}  // namespace corvane
