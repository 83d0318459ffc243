#include "workflow/open_apps_snapshot.h"

#include <fmt/format.h>

#include <functional>
#include <utility>
#include <vector>

#include "core/policies/running_bundles.h"

namespace corvane {

namespace {

// Asked of `count` applications.
std::function<bool(const AppInfo&)> openness(std::size_t count, const WorkflowServices& services, const Logger& log) {
  auto running = RunningBundles::of(services.processes);
  if (!running)
    log.error(
        fmt::format("Could not enumerate running processes; treating all {} pending update(s) as open apps the user "
                    "has to act on.",
                    count));
  return [running = std::move(running)](const AppInfo& app) { return !running || running->holds(app); };
}

}  // namespace

LabelSet openLabels(const Apps& apps, const WorkflowServices& services, const Logger& log) {
  const auto isOpen = openness(apps.size(), services, log);
  LabelSet open;
  for (const auto& app : apps)
    if (isOpen(app)) open.insert(app.label);
  return open;
}

OpenAppsSnapshot openAppsSnapshot(const InventoryFields& inventory, const AppFacts& facts,
                                  const WorkflowServices& services, const Logger& log) {
  OpenAppsSnapshot snapshot{.cycleComplete = facts.cycleComplete};
  if (inventory.cycleCompletionMessage) return snapshot;
  std::vector<const AppInfo*> pending;
  for (const auto& app : inventory.apps)
    if (isPending(app, facts) && !isHeldBack(app.label, facts)) pending.push_back(&app);
  const auto isOpen = openness(pending.size(), services, log);
  for (const auto* app : pending) {
    snapshot.pending.push_back(app->label);
    (isOpen(*app) ? snapshot.openLabels : snapshot.closedLabels).insert(app->label);
  }
  // Of one label with two applications the open one decides.
  for (const auto& label : snapshot.openLabels) snapshot.closedLabels.erase(label);
  const bool someClosed = !snapshot.closedLabels.empty();
  const bool waits = facts.config->backgroundPatchClosedAppsRequireOnAC && !services.power.isOnACPower();
  snapshot.canPatchClosedApps = someClosed && facts.config->backgroundPatchClosedAppsEnabled && !waits;
  snapshot.closedAppsWaitForACPower = someClosed && facts.config->backgroundPatchClosedAppsEnabled && waits;
  return snapshot;
}

}  // namespace corvane
