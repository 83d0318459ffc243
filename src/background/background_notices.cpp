#include "background/background_notices.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <span>

#include "base/localized.h"

namespace corvane {
namespace {

constexpr std::size_t kNamesShown = 3;

std::string startedTitle() { return localized("Corvane is updating closed apps"); }

NotificationContent updated(std::string identifier, std::int64_t count) {
  return {.type = CRVNotificationType::backgroundPatchCompleted,
          .identifier = std::move(identifier),
          .title = localized("Corvane updated apps"),
          .body = count == 1 ? localized("Updated 1 app in the background.")
                             : localized("Updated {} apps in the background.", count)};
}

NotificationContent failedWith(std::string identifier, std::string body) {
  return {.type = CRVNotificationType::backgroundPatchFailed,
          .identifier = std::move(identifier),
          .title = localized("Corvane background update finished with errors"),
          .body = std::move(body)};
}

std::string noDetails() { return localized("Some apps could not be updated. Open Corvane for details."); }

}  // namespace

NotificationContent passStartedNotice(const std::vector<std::string>& names, const std::string& id) {
  const auto shown = fmt::format("{}", fmt::join(std::span(names).first(std::min(names.size(), kNamesShown)), ", "));
  return {.type = CRVNotificationType::backgroundPatchStarted,
          .identifier = "background-patch-start-" + id,
          .title = startedTitle(),
          .body = names.size() <= kNamesShown
                      ? localized("Updating {} in the background…", shown)
                      : localized("Updating {} and {} more in the background…", shown, names.size() - kNamesShown)};
}

std::optional<NotificationContent> passEndedNotice(bool success, const std::string& problem, std::int64_t installed,
                                                   const std::string& id) {
  const auto identifier = "background-patch-" + id;
  if (!success) return failedWith(identifier, problem.empty() ? noDetails() : problem);
  if (installed == 0) return std::nullopt;
  return updated(identifier, installed);
}

std::optional<NotificationContent> helperPassStartedNotice(const HelperBackgroundCurrentRun& run) {
  const auto& name = run.currentLabelDisplayName ? run.currentLabelDisplayName : run.currentLabel;
  if (run.totalLabels < 1 || !name) return std::nullopt;
  return NotificationContent{.type = CRVNotificationType::backgroundPatchStarted,
                             .identifier = "helper-background-patch-start-" + run.runID,
                             .title = startedTitle(),
                             .body = run.totalLabels == 1 ? localized("Updating {} in the background…", *name)
                                                          : localized("Updating {} and {} more in the background…",
                                                                      *name, run.totalLabels - 1)};
}

std::optional<NotificationContent> helperPassEndedNotice(const BackgroundPatchSummary& summary) {
  const auto identifier = "helper-background-patch-" + summary.runID;
  if (summary.hasFailures) {
    if (summary.totalLabels <= 0) return failedWith(identifier, noDetails());
    const auto examples = std::span(summary.labels).first(std::min(summary.labels.size(), kNamesShown));
    return failedWith(identifier,
                      localized("{} of {} updates failed (e.g. {}). Open Corvane for details.", summary.failureCount,
                                summary.totalLabels, joined({examples.begin(), examples.end()})));
  }
  if (summary.patchedCount < 1) return std::nullopt;
  return updated(identifier, summary.patchedCount);
}

NotificationContent selfUpdateNotice(const SelfUpdateAvailability& update, const std::string& version) {
  return {.type = CRVNotificationType::selfUpdateAvailable,
          .identifier = "self-update-" + version,
          .title = localized("Corvane update available"),
          .body = update.runningVersion
                      ? localized("Version {} is available (you have {}). Open Corvane to install.",
                                  update.availableVersion, *update.runningVersion)
                      : localized("Version {} is available. Open Corvane to install.", update.availableVersion)};
}

}  // namespace corvane
