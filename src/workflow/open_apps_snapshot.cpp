#include "workflow/open_apps_snapshot.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "base/ascii.h"
#include "core/policies/running_apps_detector.h"

namespace corvane {

std::set<Label> OpenAppsSnapshot::labels() const {
  std::set<Label> all;
  for (const auto& app : apps) all.insert(app.label);
  return all;
}

std::set<Label> OpenAppsSnapshot::closedLabels() const {
  std::set<Label> closed;
  for (const auto& app : apps)
    if (!openLabels.contains(app.label)) closed.insert(app.label);
  return closed;
}

std::set<Label> openLabels(const Apps& apps, const WorkflowServices& services, const Logger& log) {
  const RunningAppsDetector detector(services.processes);
  const auto paths = detector.runningAppBundlePathsIfEnumerable();
  if (!paths)
    log.error(
        fmt::format("Could not enumerate running processes; treating all {} pending update(s) as open apps the user "
                    "has to act on.",
                    apps.size()));
  const auto identifiers = detector.runningBundleIdentifiers();
  const auto isOpen = [&](const AppInfo& app) {
    return !paths || (app.appPath && !app.appPath->empty() && paths->contains(*app.appPath)) ||
           (app.packageID && !app.packageID->empty() && identifiers.contains(lowercased(*app.packageID)));
  };
  std::set<Label> open;
  for (const auto& app : apps)
    if (isOpen(app)) open.insert(app.label);
  return open;
}

OpenAppsSnapshot openAppsSnapshot(const InventoryFields& inventory, const AppFacts& facts,
                                  const WorkflowServices& services, const Logger& log) {
  OpenAppsSnapshot snapshot;
  if (inventory.cycleCompletionMessage) return snapshot;
  std::ranges::copy_if(inventory.apps, std::back_inserter(snapshot.apps), [&](const AppInfo& app) {
    return isPending(app, facts) && !app.teamIDMismatch && !isHeldBack(app.label, facts);
  });
  snapshot.openLabels = openLabels(snapshot.apps, services, log);
  const bool someClosed = !snapshot.closedLabels().empty();
  const bool waits = facts.config->backgroundPatchClosedAppsRequireOnAC && !services.power.isOnACPower();
  snapshot.canPatchClosedApps = someClosed && facts.config->backgroundPatchClosedAppsEnabled && !waits;
  snapshot.closedAppsWaitForACPower = someClosed && facts.config->backgroundPatchClosedAppsEnabled && waits;
  return snapshot;
}

}  // namespace corvane
