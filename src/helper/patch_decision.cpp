#include "helper/patch_decision.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/discovery/app_discovery_service.h"
#include "core/policies/installomator_exit_code.h"
#include "core/policies/version_comparator.h"

namespace corvane {
namespace {

bool satisfies(const AppInfo& app, const std::optional<std::string>& target, VersionComparisonMethod method) {
  return !VersionComparator::hasUpdate(app.currentVersion, app.currentBundleVersion, target, method);
}

bool sameVersion(const AppInfo& a, const AppInfo& b) {
  return a.currentVersion == b.currentVersion && a.currentBundleVersion == b.currentBundleVersion;
}

PatchOutcome outcomeAfterZero(PatchOutcome outcome, const AppInfo& before, const std::optional<AppInfo>& after,
                              const CorvaneConfiguration& config) {
  const bool there = after && after->isInstalled();
  if (there && satisfies(*after, before.newVersion, config.versionComparisonMethod)) {
    const bool wasCurrent = before.newVersion && before.isInstalled() &&
                            satisfies(before, before.newVersion, config.versionComparisonMethod);
    outcome.installed = !sameVersion(before, *after) || wasCurrent;
    outcome.text = outcome.installed ? "installed" : "was current";
    return outcome;
  }
  outcome.status = PatchingStatus::failure;
  outcome.code = InstallomatorExitCode::kVersionUnchanged;
  outcome.text = there
                     ? fmt::format("ended without error, but version is still {}", outcome.version.value_or("unknown"))
                     : "ended without error, but nothing is installed";
  return outcome;
}

}  // namespace

PatchStep decideBeforeRun(const std::optional<AppInfo>& app, const CorvaneConfiguration& config) {
  if (!app) return PatchStep::refuseUnknown;
  if (!app->newVersion || !app->isInstalled()) return PatchStep::install;
  const bool reinstall = AppDiscoveryService::reinstallsCurrentRequiredApps(config) &&
                         AppDiscoveryService::isRequiredLabel(app->label, std::nullopt, config);
  if (reinstall) return PatchStep::install;
  return satisfies(*app, app->newVersion, config.versionComparisonMethod) ? PatchStep::leaveCurrent
                                                                          : PatchStep::install;
}

PatchOutcome outcomeWithoutRun(PatchStep step, const Label& label, const std::optional<AppInfo>& app) {
  if (step == PatchStep::refuseUnknown)
    return {.label = label,
            .status = PatchingStatus::failure,
            .code = 1,
            .receipt = false,
            .text = "is not in the catalogue"};
  return {.label = label,
          .status = PatchingStatus::success,
          .version = app ? app->currentVersion : std::nullopt,
          .targetVersion = app ? app->newVersion : std::nullopt,
          .text = "is current"};
}

PatchOutcome outcomeOfRun(const AppInfo& before, const std::optional<AppInfo>& after, ToolEnd end,
                          const CorvaneConfiguration& config) {
  PatchOutcome outcome{.label = before.label,
                       .code = end.code,
                       .version = after ? after->currentVersion : std::nullopt,
                       .targetVersion = before.newVersion};
  if (end.code == 0 && !end.timedOut) return outcomeAfterZero(std::move(outcome), before, after, config);
  const bool failed = end.timedOut || InstallomatorExitCode::countsAsInstallFailure(end.code);
  outcome.status = failed ? PatchingStatus::failure : PatchingStatus::skipped;
  outcome.text = end.timedOut ? "took too long and was ended"
                              : fmt::format("ended with code {} ({})", end.code,
                                            InstallomatorExitCode::detail(end.code, false).shortName);
  return outcome;
}

PatchRunAnswer answerOf(const std::vector<PatchOutcome>& outcomes) {
  const auto installed = std::ranges::count_if(outcomes, &PatchOutcome::installed);
  Labels failed;
  for (const auto& outcome : outcomes)
    if (outcome.status == PatchingStatus::failure) failed.push_back(outcome.label);
  PatchRunAnswer answer{
      .success = std::ranges::all_of(outcomes, [](const auto& o) { return o.status == PatchingStatus::success; }),
      .message = fmt::format("Updated {} of {}.", installed, outcomes.size()),
      .installedCount = installed};
  if (!failed.empty()) answer.message += fmt::format(" Failed: {}.", joined(failed));
  return answer;
}

PatchingReceipt receiptOf(const PatchOutcome& outcome, Date finishedAt) {
  return {.label = outcome.label,
          .timestamp = finishedAt,
          .status = outcome.status,
          .version = outcome.version,
          .targetVersion = outcome.targetVersion,
          .installomatorExitCode = outcome.code,
          .usedStagedInstaller = false};
}

}  // namespace corvane
