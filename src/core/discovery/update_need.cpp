#include "core/discovery/update_need.h"

#include "core/discovery/app_discovery_service.h"
#include "core/policies/version_comparator.h"

namespace corvane {
namespace {

bool hasNewerVersion(const AppInfo& app, const CorvaneConfiguration& config) {
  return VersionComparator::hasUpdate(app.currentVersion, app.currentBundleVersion, app.newVersion,
                                      config.versionComparisonMethod);
}

bool isRequired(const AppInfo& app, const CorvaneConfiguration& config) {
  return AppDiscoveryService::isRequiredLabel(app.label, std::nullopt, config);
}

}  // namespace

bool isForcedReinstallPending(const AppInfo& app, bool excluded, const UpdateNeedFacts& facts) {
  return app.isInstalled() && facts.reinstallsCurrentRequiredApps && !hasNewerVersion(app, facts.config) && !excluded &&
         isRequired(app, facts.config) &&
         LabelInstallHistory::isForcedReinstallPending(app, facts.config, facts.installs, facts.cycleStart);
}

bool needsUpdate(const AppInfo& app, bool excluded, const UpdateNeedFacts& facts) {
  if (app.teamIDMismatch || excluded) return false;
  if (!app.isInstalled()) return isRequired(app, facts.config);
  return hasNewerVersion(app, facts.config) || isForcedReinstallPending(app, excluded, facts);
}

}  // namespace corvane
