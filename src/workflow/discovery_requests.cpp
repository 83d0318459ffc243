// The entries of the pipeline: which pass is asked for, and when none is.
#include <fmt/format.h>

#include <algorithm>

#include "base/localized.h"
#include "core/discovery/app_discovery_service.h"
#include "workflow/discovery_pipeline.h"

namespace corvane {

void DiscoveryPipeline::discoverInstalledApps() {
  startDiscovery({.includeLatestVersions = false, .operation = DiscoveryOperation::discoverInstalled});
}

void DiscoveryPipeline::checkForUpdates() {
  c_.messages.error(std::nullopt);
  const bool full = fullDiscoveryNeeded(c_.services.preferences.loadConfiguration());
  startDiscovery(
      {.includeLatestVersions = true, .operation = DiscoveryOperation::checkUpdates, .forceFullDiscovery = full});
}

bool DiscoveryPipeline::fullDiscoveryNeeded(const CorvaneConfiguration& config) {
  const auto now = AppDiscoveryService::fingerprintInstalledApps(c_.services.places, c_.services.log);
  const auto stored = c_.services.preferences.readLastInventoryFingerprint();
  // An empty fingerprint means that nothing could be read: it says nothing about the inventory.
  const bool unchanged = stored && *stored == now && !now.empty();
  const bool hasOtherSelf = std::ranges::any_of(c_.fields.inventory.apps, [&](const AppInfo& app) {
    return AppDiscoveryService::isOtherBuiltInSelfProductLabel(app.label, config);
  });
  if (unchanged && hasOtherSelf)
    c_.log.info(
        fmt::format("A saved app is bound to the other Corvane label; running full discovery so {} can claim "
                    "it.",
                    config.selfUpdateLabel.text));
  else if (unchanged)
    c_.log.info("Inventory unchanged since last discovery; using fast subset update check");
  else if (!stored)
    c_.log.info("No prior inventory fingerprint; running full discovery before update check");
  else
    c_.log.info("Inventory fingerprint changed since last discovery; running full discovery before update check");
  return !unchanged || hasOtherSelf;
}

void DiscoveryPipeline::checkForUpdates(const Labels& labels) {
  auto unique = withoutDuplicates(labels);
  if (unique.empty()) {
    c_.log.info("checkForUpdates(forLabels:) called with empty label list; skipping.");
    return;
  }
  startDiscovery({.includeLatestVersions = true,
                  .operation = DiscoveryOperation::checkUpdates,
                  .labelsFilter = std::move(unique)});
}

void DiscoveryPipeline::forceRecheck(const Label& label) {
  if (label.empty()) return;
  if (c_.gate.busy()) return c_.log.info("Skipping force re-check — another operation is running.");
  c_.log.info(fmt::format("Force re-check requested for label {}.", label.text));
  checkForUpdates({label});
}

void DiscoveryPipeline::forceRecheckAllAlerts() {
  Labels failing;
  for (const auto& app : c_.fields.inventory.apps)
    if (app.updateCheckFailed) failing.push_back(app.label);
  if (failing.empty()) return c_.messages.status(localized("No alerts to re-check."));
  if (c_.gate.busy()) return c_.log.info("Skipping force re-check (all) — another operation is running.");
  c_.log.info(fmt::format("Force re-check requested for {} Alert label(s).", failing.size()));
  checkForUpdates(failing);
}

// Touches neither the gate nor the generation: a pass under way goes on, and its answer replaces this one.
void DiscoveryPipeline::applyScheduledDiscoveryInventory() {
  const auto found = c_.services.scheduledApps.read();
  if (!found)
    return c_.log.warning("Scheduled discovery completed but helper-discovered-apps.json was missing or unreadable.");
  c_.crossings.replaceApps(withoutIgnored(*found, c_.services.preferences.loadConfiguration()));
  c_.crossings.storeApps();
  c_.crossings.storeFingerprint();
  const auto now = c_.services.clock.now();
  c_.crossings.recordDiscovery(now);
  c_.crossings.recordUpdateCheck(now);
  c_.crossings.recomputeCounts(SideEffects::suppressed);
  c_.log.info(
      fmt::format("Applied helper scheduled-discovery inventory ({} app(s)); notify/dialog suppressed until "
                  "NextAutoLaunch.",
                  c_.fields.inventory.apps.size()));
}

void DiscoveryPipeline::loadStatus() {
  c_.crossings.refreshDeadlineDisplay();
  const bool busy = c_.gate.busy();
  c_.crossings.refreshHelperState(true);
  if (busy) return;
  c_.messages.error(std::nullopt);
  const bool wanted = !c_.fields.inventory.lastDiscoveryDate;
  // The refresh may have started a discovery of its own, whose operation and text are to stand.
  if (!c_.gate.busy()) {
    c_.gate.setOperation(wanted ? std::optional(DiscoveryOperation::initialLoad) : std::nullopt);
    c_.messages.status(wanted ? std::optional(localized("Loading status…")) : std::nullopt);
  }
  c_.crossings.evaluateAutoReset();
  c_.services.helper.getStatus(lifeline_.guard([this, wanted](const Result<StatusInfo>& status) {
    if (!status) c_.log.warning(fmt::format("Initial getStatus failed: {}", status.error().text));
    if (wanted || c_.fields.gate.currentOperation != DiscoveryOperation::initialLoad) return;
    c_.gate.setOperation(std::nullopt);
    c_.messages.status(std::nullopt);
  }));
  if (!wanted) return c_.log.info("Skipping automatic discovery; lastDiscoveryDate exists");
  c_.log.info("No lastDiscoveryDate found; performing initial automatic discovery");
  discoverInstalledApps();
}

}  // namespace corvane
