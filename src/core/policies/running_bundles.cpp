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

bool RunningBundles::runsFrom(const AppInfo& app) const { return app.appPath && paths.contains(*app.appPath); }

bool RunningBundles::runsAs(const AppInfo& app) const {
  return app.packageID && identifiers.contains(lowercased(*app.packageID));
}

std::optional<RunningBundles::Objection> RunningBundles::objection(const AppInfo& app) const {
  if (!app.isInstalled()) return std::nullopt;
  if (app.appPath.value_or("").empty() && app.packageID.value_or("").empty())
    return Objection{.text = "no appPath or packageID on file, cannot certify the app is closed",
                     .nothingOnFile = true};
  if (runsFrom(app)) return Objection{.text = *app.appPath + " is currently running"};
  if (runsAs(app)) return Objection{.text = "bundle ID " + lowercased(*app.packageID) + " is currently running"};
  return std::nullopt;
}

bool backgroundListsAllow(const Label& label, const CorvaneConfiguration& config) {
  const auto holds = [&](const std::vector<std::string>& list) {
    return std::ranges::find(list, label.text) != list.end();
  };
  const auto& allowed = config.backgroundPatchClosedAppsAllowList;
  return !holds(config.backgroundPatchClosedAppsBlockList) && (allowed.empty() || holds(allowed));
}

}  // namespace corvane
