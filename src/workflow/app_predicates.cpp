#include "workflow/app_predicates.h"

#include <algorithm>

#include "core/discovery/app_discovery_service.h"
#include "core/discovery/update_need.h"
#include "core/policies/installomator_exit_code.h"

namespace corvane {

namespace {

UpdateNeedFacts needFacts(const AppFacts& facts) {
  return {.config = facts.config,
          .reinstallsCurrentRequiredApps = facts.reinstallsCurrentRequiredApps,
          .installs = facts.installs,
          .cycleStart = facts.cycleStart};
}

// What the predicates share, worked out once for an application.
struct Standing {
  bool excluded = false;
  bool needsUpdate = false;

  Standing(const AppInfo& app, const AppFacts& facts)
      : excluded(isExcludedAppStoreApp(app, facts)),
        needsUpdate(corvane::needsUpdate(app, excluded, needFacts(facts))) {}

  [[nodiscard]] bool pending(const AppInfo& app) const {
    return needsUpdate && !app.updateCheckFailed && !app.teamIDMismatch;
  }
};

bool isHeld(const Label& label, const AppFacts& facts) {
  const auto record = facts.failures.find(label);
  if (record == facts.failures.end()) return false;
  const auto target = facts.failureTargets.find(label);
  return LabelFailureHistory::isHeld(label, target == facts.failureTargets.end() ? std::nullopt : target->second,
                                     facts.cycleStart, facts.failures);
}

const PatchingReceipt* failedReceipt(const AppInfo& app, const Standing& standing, const AppFacts& facts) {
  if (!standing.pending(app) || standing.excluded || !facts.latestReceipts) return nullptr;
  const auto receipt = facts.latestReceipts->find(app.label);
  if (receipt == facts.latestReceipts->end() || receipt->second.status != PatchingStatus::failure) return nullptr;
  return InstallomatorExitCode::countsAsInstallFailure(receipt->second.installomatorExitCode) ? &receipt->second
                                                                                              : nullptr;
}

bool isAlert(const AppInfo& app, const Standing& standing, bool held, const AppFacts& facts) {
  if (app.updateCheckFailed) return !standing.excluded;
  return (standing.needsUpdate && held) || failedReceipt(app, standing, facts) != nullptr;
}

bool isUpToDate(const AppInfo& app, const Standing& standing) {
  return !standing.needsUpdate && !app.updateCheckFailed && app.newVersion && !standing.excluded;
}

bool isShown(const AppInfo& app, FilterMode mode, const AppFacts& facts) {
  switch (mode) {
    case FilterMode::all:
      return true;
    case FilterMode::needsUpdate:
      return !app.updateCheckFailed && appNeedsUpdate(app, facts);
    case FilterMode::alerts:
      return isAlert(app, facts);
    case FilterMode::upToDate:
      return isUpToDate(app, facts);
  }
  return false;
}

}  // namespace

bool isExcludedAppStoreApp(const AppInfo& app, const AppFacts& facts) {
  return !facts.replacesAppStoreApps && (app.macAppStoreManaged || facts.hasAppStoreReceipt(app));
}

bool isForcedReinstallPending(const AppInfo& app, const AppFacts& facts) {
  return isForcedReinstallPending(app, isExcludedAppStoreApp(app, facts), needFacts(facts));
}

bool appNeedsUpdate(const AppInfo& app, const AppFacts& facts) { return Standing(app, facts).needsUpdate; }

bool isPending(const AppInfo& app, const AppFacts& facts) { return Standing(app, facts).pending(app); }

std::optional<LabelFailureHistory::Record> heldFailureRecord(const Label& label, const AppFacts& facts) {
  if (!isHeld(label, facts)) return std::nullopt;
  return facts.failures.find(label)->second;
}

bool isHeldBack(const Label& label, const AppFacts& facts) {
  return isHeld(label, facts) || (facts.cycleComplete && facts.clearedLabels.contains(label));
}

std::optional<PatchingReceipt> latestFailedReceipt(const AppInfo& app, const AppFacts& facts) {
  const auto* receipt = failedReceipt(app, Standing(app, facts), facts);
  return receipt != nullptr ? std::optional(*receipt) : std::nullopt;
}

bool isAlert(const AppInfo& app, const AppFacts& facts) {
  return isAlert(app, Standing(app, facts), isHeld(app.label, facts), facts);
}

bool isUpToDate(const AppInfo& app, const AppFacts& facts) { return isUpToDate(app, Standing(app, facts)); }

Labels actionableUpdateLabels(const Apps& apps, const AppFacts& facts) {
  Labels pending;
  for (const auto& app : apps)
    if (isPending(app, facts)) pending.push_back(app.label);
  return AppDiscoveryService::droppingIgnoredLabels(pending, facts.config);
}

Labels promptableUpdateLabels(const InventoryFields& inventory, const AppFacts& facts) {
  if (inventory.cycleCompletionMessage) return {};
  auto labels = actionableUpdateLabels(inventory.apps, facts);
  std::erase_if(labels, [&](const Label& label) { return isHeldBack(label, facts); });
  return labels;
}

std::int64_t uncheckedAppCount(const Apps& apps) {
  return std::ranges::count_if(apps, [](const AppInfo& app) { return !app.newVersion && !app.updateCheckFailed; });
}

std::int64_t updateCheckFailedCount(const Apps& apps, const AppFacts& facts) {
  return std::ranges::count_if(
      apps, [&](const AppInfo& app) { return app.updateCheckFailed && !isExcludedAppStoreApp(app, facts); });
}

Apps filteredApps(const Apps& apps, FilterMode mode, const AppFacts& facts, const Locale& locale) {
  std::vector<std::pair<std::string, const AppInfo*>> shown;
  for (const auto& app : apps)
    if (isShown(app, mode, facts)) shown.emplace_back(locale.sortKey(app.displayName()), &app);
  std::ranges::stable_sort(shown, {}, [](const auto& row) -> const std::string& { return row.first; });
  Apps rows;
  rows.reserve(shown.size());
  for (const auto& [key, app] : shown) rows.push_back(*app);
  return rows;
}

AppCounts deriveCounts(const Apps& apps, const AppFacts& facts) {
  AppCounts counts;
  for (const auto& app : apps) {
    const Standing standing(app, facts);
    const bool held = standing.needsUpdate && isHeld(app.label, facts);
    if (standing.pending(app)) {
      if (facts.cycleComplete)
        ++counts.updatesAwaitingNextCycle;
      else if (!held)
        ++counts.pendingUpdates;
    }
    if (isUpToDate(app, standing)) ++counts.upToDateCount;
    if (isAlert(app, standing, held, facts)) ++counts.alertCount;
  }
  return counts;
}

}  // namespace corvane
