#include "ctl/label_judgement.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/discovery/app_discovery_service.h"
#include "workflow/app_predicates.h"

namespace corvane::ctl {
namespace {

constexpr std::string_view kNotCheckedYet = "not checked yet; `corvanectl check` does";

bool holds(const Labels& labels, const Label& label) { return std::ranges::find(labels, label) != labels.end(); }

bool isIgnored(const Label& label, const CorvaneConfiguration& config) {
  return AppDiscoveryService::isIgnoredLabel(label, std::nullopt, config) ||
         AppDiscoveryService::isHiddenSelfUpdateLabel(label, config);
}

// Copies of the App Store and applications signed by another team are never checked.
bool waitsForItsFirstCheck(const AppInfo& app, const AppFacts& facts) {
  return !app.newVersion && !app.updateCheckFailed && !app.teamIDMismatch && !app.macAppStoreManaged &&
         !isExcludedAppStoreApp(app, facts);
}

// Why a named application that is not pending cannot be updated; empty when there is no need to.
std::string whyNotUpdated(const AppInfo& app, const AppFacts& facts) {
  if (app.teamIDMismatch) return "is signed by another vendor than its label expects";
  if (isExcludedAppStoreApp(app, facts)) return "is updated by the App Store";
  if (app.updateCheckFailed) {
    const auto& reason = app.updateCheckFailureReason;
    return "could not be checked" + (reason && !reason->empty() ? ": " + *reason : std::string());
  }
  return app.newVersion ? "" : fmt::format("was {}", kNotCheckedYet);
}

WantedUpdates allUpdates(const Apps& apps, const AppFacts& facts) {
  WantedUpdates wanted{.labels = actionableUpdateLabels(apps, facts)};
  const bool nonePending = wanted.labels.empty();
  std::erase_if(wanted.labels, [&](const Label& label) { return isHeldBack(label, facts); });
  const auto unchecked =
      std::ranges::count_if(apps, [&](const auto& app) { return waitsForItsFirstCheck(app, facts); });
  if (nonePending && unchecked == 1) wanted.refused.push_back(fmt::format("1 application was {}.", kNotCheckedYet));
  if (nonePending && unchecked > 1)
    wanted.refused.push_back(fmt::format("{} applications were {}.", unchecked, kNotCheckedYet));
  return wanted;
}

}  // namespace

std::string labelTrouble(const Labels& named, const Labels& found, const Apps& known,
                         const CorvaneConfiguration& config) {
  Labels ignored;
  Labels unanswered;
  Labels unknown;
  for (const auto& label : named) {
    if (isIgnored(label, config))
      ignored.push_back(label);
    else if (holds(found, label))
      continue;
    else if (std::ranges::find(known, label, &AppInfo::label) != known.end())
      unanswered.push_back(label);
    else
      unknown.push_back(label);
  }
  std::vector<std::string> sentences;
  if (!ignored.empty()) sentences.push_back(fmt::format("Ignored by the current settings: {}.", joined(ignored)));
  if (!unanswered.empty())
    sentences.push_back(
        fmt::format("No answer for {}: the label or its application is gone, and what is listed is from before.",
                    joined(unanswered)));
  if (!unknown.empty())
    sentences.push_back(
        fmt::format("No application is known under {}. `corvanectl list` shows the labels, `corvanectl discover` "
                    "looks for applications.",
                    joined(unknown)));
  return fmt::format("{}", fmt::join(sentences, " "));
}

WantedUpdates wantedUpdates(const Labels& named, const Apps& apps, const AppFacts& facts) {
  if (named.empty()) return allUpdates(apps, facts);
  WantedUpdates wanted;
  for (const auto& app : apps) {
    if (!holds(named, app.label)) continue;
    if (isPending(app, facts)) {
      wanted.labels.push_back(app.label);
      continue;
    }
    const auto why = whyNotUpdated(app, facts);
    if (why.empty())
      wanted.upToDate.push_back(app.label.text + " is up to date.");
    else
      wanted.refused.push_back(fmt::format("{} {}.", app.label.text, why));
  }
  return wanted;
}

}  // namespace corvane::ctl
