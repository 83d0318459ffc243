#include "helper/background_pass.h"

#include <fmt/format.h>

#include "core/discovery/app_discovery_service.h"
#include "core/discovery/update_need.h"
#include "core/policies/mac_app_store_update_policy.h"
#include "helper/own_schedule.h"

namespace corvane {
namespace {

bool isExcludedStoreCopy(const AppInfo& app, const PassFacts& facts) {
  return !MacAppStoreUpdatePolicy::replacesAppStoreApps(facts.config.installomatorOptions) &&
         (app.macAppStoreManaged || facts.storeCopies.contains(app.label));
}

}  // namespace

std::optional<std::string> passObjection(const CorvaneConfiguration& config, const PassConditions& conditions) {
  if (!passPlan(config)) return "feature disabled or mode changed";
  if (!conditions.toolReady) return "Installomator not present";
  if (conditions.cycleComplete) return "patching is complete for this cycle";
  if (config.backgroundPatchClosedAppsRequireOnAC && !conditions.onACPower)
    return "on battery and require-AC is enabled";
  return std::nullopt;
}

bool isPending(const AppInfo& app, const PassFacts& facts) {
  return !app.updateCheckFailed &&
         needsUpdate(app, isExcludedStoreCopy(app, facts),
                     {.config = facts.config,
                      .reinstallsCurrentRequiredApps = AppDiscoveryService::reinstallsCurrentRequiredApps(facts.config),
                      .installs = facts.installs,
                      .cycleStart = facts.cycleStart});
}

bool isHeld(const AppInfo& app, const PassFacts& facts) {
  return LabelFailureHistory::isHeld(app.label, app.newVersion, facts.cycleStart, facts.failures);
}

PassDecision decidePass(const Apps& apps, const PassFacts& facts) {
  PassDecision decision;
  for (const auto& app : apps) {
    if (!isPending(app, facts) || isHeld(app, facts)) continue;
    if (AppDiscoveryService::isIgnoredLabel(app.label, std::nullopt, facts.config)) continue;
    if (facts.config.workflowStageUpdates) decision.stage.push_back(app.label);
    const auto objection = facts.running.objection(app);
    if (objection)
      decision.notes.push_back(fmt::format("Skipping label '{}' — {}.", app.label.text, objection->text));
    else if (backgroundListsAllow(app.label, facts.config))
      decision.install.push_back(app.label);
  }
  return decision;
}

}  // namespace corvane
