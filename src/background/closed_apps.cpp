#include "background/closed_apps.h"

#include <fmt/format.h>

#include <optional>

#include "core/discovery/app_discovery_service.h"
#include "workflow/app_predicates.h"

namespace corvane {

ClosedApps certifyClosedApps(const Apps& apps, const AppFacts& facts, const RunningBundles& running) {
  ClosedApps closed;
  for (const auto& app : apps) {
    if (!isPending(app, facts) || isHeldBack(app.label, facts)) continue;
    closed.pending.push_back(app.label);
    if (AppDiscoveryService::isIgnoredLabel(app.label, std::nullopt, facts.config)) continue;
    if (const auto objection = running.objection(app)) {
      closed.remarks.push_back({.text = fmt::format("Skipping label '{}' — {}.", app.label.text, objection->text),
                                .isWarning = objection->nothingOnFile});
      continue;
    }
    if (!backgroundListsAllow(app.label, facts.config)) continue;
    closed.labels.push_back(app.label);
    closed.names.push_back(app.displayName());
  }
  return closed;
}

bool patchesClosedAppsInApp(const CorvaneConfiguration& config) {
  return config.backgroundPatchClosedAppsEnabled &&
         config.backgroundPatchClosedAppsScheduler == BackgroundPatchSchedulerMode::inApp;
}

}  // namespace corvane
