#include "helper/patch_decision.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/discovery/app_discovery_service.h"
#include "core/policies/installomator_exit_code.h"
#include "core/policies/version_comparator.h"
#include "core/preferences/options_codec.h"
#include "helper/tool_output.h"

namespace corvane {
namespace {

bool satisfies(const AppInfo& app, const std::optional<std::string>& target, VersionComparisonMethod method) {
  return !VersionComparator::hasUpdate(app.currentVersion, app.currentBundleVersion, target, method);
}

bool sameVersion(const AppInfo& a, const AppInfo& b) {
  return a.currentVersion == b.currentVersion && a.currentBundleVersion == b.currentBundleVersion;
}

PatchOutcome keptVersion(PatchOutcome outcome, bool there) {
  outcome.status = PatchingStatus::failure;
  outcome.code = InstallomatorExitCode::kVersionUnchanged;
  outcome.text = there
                     ? fmt::format("ended without error, but version is still {}", outcome.version.value_or("unknown"))
                     : "ended without error, but nothing is installed";
  return outcome;
}

PatchOutcome notVerified(PatchOutcome outcome) {
  outcome.status = PatchingStatus::failure;
  outcome.code = InstallomatorExitCode::kNotVerified;
  outcome.text = "ended without error, but could not be verified";
  return outcome;
}

PatchOutcome outcomeAfterZero(PatchOutcome outcome, const AppInfo& before, const std::optional<AppInfo>& after,
                              const ToolWords& words, const CorvaneConfiguration& config) {
  const auto method = config.versionComparisonMethod;
  if (!after) return notVerified(std::move(outcome));
  if (!after->isInstalled()) return keptVersion(std::move(outcome), false);
  const bool changed = !sameVersion(before, *after);
  const bool reached =
      outcome.targetVersion ? satisfies(*after, outcome.targetVersion, method) : changed || words.saysCurrent;
  if (!reached) return keptVersion(std::move(outcome), true);
  const bool wasReinstalled = before.newVersion && before.isInstalled() && satisfies(before, before.newVersion, method);
  outcome.installed = changed || wasReinstalled;
  outcome.text = outcome.installed ? "installed" : "was current";
  return outcome;
}

PatchOutcome refusal(const Label& label, std::int64_t code, std::string text) {
  return {.label = label, .status = PatchingStatus::failure, .code = code, .receipt = false, .text = std::move(text)};
}

}  // namespace

PatchStep decideBeforeRun(const Label& label, const std::optional<AppInfo>& app, const CorvaneConfiguration& config) {
  if (!app)
    return AppDiscoveryService::isIgnoredLabel(label, std::nullopt, config) ? PatchStep::refuseIgnored
                                                                            : PatchStep::refuseUnknown;
  if (app->teamIDMismatch) return PatchStep::refuseMismatch;
  if (!app->newVersion || !app->isInstalled()) return PatchStep::install;
  const bool reinstall = AppDiscoveryService::reinstallsCurrentRequiredApps(config) &&
                         AppDiscoveryService::isRequiredLabel(app->label, std::nullopt, config);
  if (reinstall) return PatchStep::install;
  return satisfies(*app, app->newVersion, config.versionComparisonMethod) ? PatchStep::leaveCurrent
                                                                          : PatchStep::install;
}

Duration toolTimeLimit(const CorvaneConfiguration& config) {
  constexpr Duration usual = 2h;
  constexpr std::int64_t longestPrompt = 7 * 86400;
  const auto options = parseInstallomatorOptions(config.installomatorOptions);
  if (!options.blockingProcessAction.starts_with("prompt_user")) return usual;
  return std::max<Duration>(
      usual, std::chrono::seconds(std::clamp<std::int64_t>(options.promptTimeout, 0, longestPrompt)) + 1h);
}

void ToolWords::take(std::string_view line) {
  const auto message = toolMessage(line);
  if (!message) return;
  atDialog = message->starts_with("found blocking process ") || message->starts_with("telling app ");
  saysCurrent = saysCurrent || message->starts_with("There is no newer version available") ||
                message->starts_with("No newer version") || message->find(", same as installed.") != message->npos;
  if (auto version = latestVersionIn(line)) latestVersion = std::move(version);
}

PatchOutcome outcomeWithoutRun(PatchStep step, const Label& label, const std::optional<AppInfo>& app) {
  switch (step) {
    case PatchStep::refuseUnknown:
      return refusal(label, 1, "is not in the catalogue");
    case PatchStep::refuseIgnored:
      return refusal(label, 1, "is left out by the settings");
    case PatchStep::refuseMismatch:
      return refusal(label, 5,
                     fmt::format("is signed by {} instead of {} and is never updated",
                                 app->bundleTeamID.value_or("nobody"), app->expectedTeamID.value_or("nobody")));
    case PatchStep::leaveCurrent:
    case PatchStep::install:
      break;
  }
  return {.label = label,
          .status = PatchingStatus::success,
          .version = app ? app->currentVersion : std::nullopt,
          .targetVersion = app ? app->newVersion : std::nullopt,
          .receipt = false,
          .text = "is current"};
}

PatchOutcome outcomeLeftOut(const Label& label, const std::optional<AppInfo>& app, std::string why) {
  constexpr std::int64_t openApplication = 12;  // what the tool itself ends with when it may not disturb
  return {.label = label,
          .status = PatchingStatus::skipped,
          .code = openApplication,
          .version = app ? app->currentVersion : std::nullopt,
          .targetVersion = app ? app->newVersion : std::nullopt,
          .receipt = false,
          .text = std::move(why)};
}

PatchOutcome outcomeOfRun(const AppInfo& before, const std::optional<AppInfo>& after, const ToolEnd& end,
                          const CorvaneConfiguration& config) {
  PatchOutcome outcome{.label = before.label,
                       .code = end.code,
                       .version = after ? after->currentVersion : std::nullopt,
                       .targetVersion = before.newVersion ? before.newVersion : end.words.latestVersion};
  if (end.timedOut && end.words.atDialog) {
    constexpr std::int64_t noAnswer = 25;  // what the tool itself ends with where its prompt has a limit
    outcome.status = PatchingStatus::skipped;
    outcome.code = noAnswer;
    outcome.text = "was ended, since nobody answered whether the application may quit";
    return outcome;
  }
  if (end.code == 0 && !end.timedOut) return outcomeAfterZero(std::move(outcome), before, after, end.words, config);
  const bool failed = end.timedOut || InstallomatorExitCode::countsAsInstallFailure(end.code);
  outcome.status = failed ? PatchingStatus::failure : PatchingStatus::skipped;
  outcome.text = end.timedOut ? "took too long and was ended"
                              : fmt::format("ended with code {} ({})", end.code,
                                            InstallomatorExitCode::detail(end.code, false).shortName);
  return outcome;
}

PatchRunAnswer answerOf(const std::vector<PatchOutcome>& outcomes) {
  const auto installed = std::ranges::count_if(outcomes, &PatchOutcome::installed);
  const auto labelsOf = [&](PatchingStatus status) {
    Labels labels;
    for (const auto& outcome : outcomes)
      if (outcome.status == status) labels.push_back(outcome.label);
    return labels;
  };
  return patchRunAnswer(installed, outcomes.size(), labelsOf(PatchingStatus::skipped),
                        labelsOf(PatchingStatus::failure));
}

Result<PatchRunAnswer> answerOf(const RunReport& report) {
  if (report.error) return std::unexpected(*report.error);
  return answerOf(report.outcomes);
}

PatchingReceipt receiptOf(const PatchOutcome& outcome, Date finishedAt) {
  return {.label = outcome.label,
          .timestamp = finishedAt,
          .status = outcome.status,
          .version = outcome.version,
          .targetVersion = outcome.targetVersion,
          .installomatorExitCode = outcome.code,
          .usedStagedInstaller = outcome.usedStagedInstaller};
}

}  // namespace corvane
