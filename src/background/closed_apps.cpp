#include "background/closed_apps.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "base/ascii.h"
#include "core/discovery/app_discovery_service.h"
#include "workflow/app_predicates.h"

namespace corvane {
namespace {

bool holds(const std::vector<std::string>& list, const Label& label) {
  return std::ranges::find(list, label.text) != list.end();
}

bool listsAllow(const Label& label, const CorvaneConfiguration& config) {
  const auto& allowed = config.backgroundPatchClosedAppsAllowList;
  return !holds(config.backgroundPatchClosedAppsBlockList, label) && (allowed.empty() || holds(allowed, label));
}

// Why an installed application cannot be taken for closed.
std::optional<ClosedApps::Remark> whyNotClosed(const AppInfo& app, const RunningFacts& running) {
  const auto path = app.appPath.value_or("");
  const auto identifier = lowercased(app.packageID.value_or(""));
  const auto skipped = [&](std::string_view why, bool isWarning = false) {
    return ClosedApps::Remark{.text = fmt::format("Skipping label '{}' — {}", app.label.text, why),
                              .isWarning = isWarning};
  };
  if (path.empty() && identifier.empty())
    return skipped("no appPath or packageID on file, cannot certify the app is closed.", true);
  if (!path.empty() && running.bundlePaths.contains(path)) return skipped(path + " is currently running.");
  if (!identifier.empty() && running.bundleIdentifiers.contains(identifier))
    return skipped(fmt::format("bundle ID {} is currently running.", identifier));
  return std::nullopt;
}

}  // namespace

ClosedApps certifyClosedApps(const Apps& apps, const AppFacts& facts, const RunningFacts& running) {
  ClosedApps closed;
  for (const auto& app : apps) {
    if (!isPending(app, facts) || isHeldBack(app.label, facts)) continue;
    closed.pending.push_back(app.label);
    if (AppDiscoveryService::isIgnoredLabel(app.label, std::nullopt, facts.config)) continue;
    if (app.isInstalled()) {
      if (auto remark = whyNotClosed(app, running)) {
        closed.remarks.push_back(std::move(*remark));
        continue;
      }
    }
    if (!listsAllow(app.label, facts.config)) continue;
    closed.labels.push_back(app.label);
    closed.names.push_back(app.displayName());
  }
  return closed;
}

}  // namespace corvane
