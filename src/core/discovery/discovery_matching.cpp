#include "core/discovery/discovery_matching.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "core/discovery/app_discovery_service.h"
#include "core/discovery/file_name_folding.h"
#include "core/discovery/label_choice.h"

namespace corvane {
namespace {

// Labels that compete for one application.
struct Contest {
  std::vector<LabelCandidate> candidates;
  const InstalledBundle* bundle = nullptr;
  std::optional<PackageReceipt> receipt;
};

// Contests by what is fought for, in an order that does not hang on the catalogue's.
using Contests = std::map<std::string, Contest>;

bool isBound(const Apps& saved, const Label& label, const InstalledBundle* bundle) {
  return std::ranges::any_of(saved, [&](const AppInfo& app) {
    return app.label == label && (bundle == nullptr ? !app.appPath : app.appPath == bundle->path);
  });
}

// A required label is one that the lists made from this scan call required too; they know labels only.
bool isRequired(const DiscoveryQuestion& question, const Label& label) {
  return AppDiscoveryService::isRequiredLabel(label, std::nullopt, question.config);
}

std::vector<LabelCandidate> allowedCandidates(const DiscoveryQuestion& question, const LabelFragment& fragment) {
  using Service = AppDiscoveryService;
  std::vector<LabelCandidate> candidates;
  for (const auto& label : fragment.labels) {
    if (isIgnoredInCatalogue(label, fragment, question.config)) continue;
    if (Service::isOtherBuiltInSelfProductLabel(label, question.config)) continue;
    const bool asked = isRequired(question, label) || Service::isOptionalLabel(label, std::nullopt, question.config);
    candidates.push_back({.label = label,
                          .fragment = &fragment,
                          .builtIn = Service::isSelfUpdateLabel(label, question.config),
                          .asked = asked,
                          .alreadyBound = false});
  }
  return candidates;
}

// The label's receipt, unless it is only the left-over of a bundle that was thrown away.
std::optional<PackageReceipt> provingReceipt(const DiscoveryQuestion& question, const LabelFragment& fragment,
                                             const InstalledBundle* bundle) {
  if (!fragment.packageID) return std::nullopt;
  auto receipt = question.receipts.find(*fragment.packageID);
  if (receipt && bundle == nullptr && receipt->installsApplications()) return std::nullopt;
  return receipt;
}

void enter(Contests& contests, std::string key, std::vector<LabelCandidate> candidates, const InstalledBundle* bundle,
           std::optional<PackageReceipt> receipt) {
  auto& contest = contests[std::move(key)];
  contest.candidates.insert(contest.candidates.end(), candidates.begin(), candidates.end());
  contest.bundle = bundle;
  contest.receipt = std::move(receipt);
}

struct AllContests {
  Contests installed;
  Contests receiptOnly;
  Contests missing;
};

AllContests contestsOf(const DiscoveryQuestion& question, BundleLocator& locator) {
  AllContests all;
  for (const auto& fragment : question.catalog.fragments()) {
    auto candidates = allowedCandidates(question, fragment);
    if (candidates.empty()) continue;
    const auto* bundle = locator.locate(fragment);
    for (auto& candidate : candidates) candidate.alreadyBound = isBound(question.savedApps, candidate.label, bundle);
    if (bundle != nullptr) {
      enter(all.installed, bundle->path, std::move(candidates), bundle, {});
    } else if (auto receipt = provingReceipt(question, fragment, nullptr)) {
      enter(all.receiptOnly, *fragment.packageID, std::move(candidates), nullptr, std::move(receipt));
    } else {
      std::erase_if(candidates,
                    [&](const LabelCandidate& candidate) { return !isRequired(question, candidate.label); });
      const auto path = fragment.bundlePath();
      if (!candidates.empty())
        enter(all.missing, path ? foldedFileName(*path) : "/" + fragment.fileName, std::move(candidates), nullptr, {});
    }
  }
  return all;
}

DiscoveryMatch winnerOf(const DiscoveryQuestion& question, const Contest& contest) {
  const auto bundleName = contest.bundle != nullptr ? contest.bundle->fileName() : std::string_view();
  const auto* winner = chooseLabel(contest.candidates, bundleName);
  auto receipt =
      contest.bundle != nullptr ? provingReceipt(question, *winner->fragment, contest.bundle) : contest.receipt;
  return {.label = winner->label,
          .fragment = winner->fragment,
          .bundle = contest.bundle,
          .receipt = std::move(receipt),
          .listedWhenMissing = isRequired(question, winner->label)};
}

}  // namespace

bool isIgnoredInCatalogue(const Label& label, const LabelFragment& fragment, const CorvaneConfiguration& config) {
  if (AppDiscoveryService::isIgnoredLabel(label, std::nullopt, config)) return true;
  const bool fileIsALabel =
      std::ranges::find(fragment.labels, fragment.fileName, &Label::text) != fragment.labels.end();
  return !fileIsALabel && AppDiscoveryService::isIgnoredLabel(label, fragment.fileName, config);
}

std::vector<DiscoveryMatch> matchAllLabels(const DiscoveryQuestion& question, BundleLocator& locator) {
  const auto contests = contestsOf(question, locator);
  std::vector<DiscoveryMatch> matches;
  std::set<std::string> claimedPackages;
  for (const auto& [path, contest] : contests.installed) {
    matches.push_back(winnerOf(question, contest));
    for (const auto& candidate : contest.candidates)
      if (candidate.fragment->packageID) claimedPackages.insert(*candidate.fragment->packageID);
  }
  for (const auto& [packageID, contest] : contests.receiptOnly)
    if (!claimedPackages.contains(packageID)) matches.push_back(winnerOf(question, contest));
  for (const auto& [name, contest] : contests.missing) matches.push_back(winnerOf(question, contest));
  std::erase_if(matches, [&](const DiscoveryMatch& match) {
    return AppDiscoveryService::isHiddenSelfUpdateLabel(match.label, question.config);
  });
  return matches;
}

std::vector<DiscoveryMatch> matchTheseLabels(const DiscoveryQuestion& question, BundleLocator& locator,
                                             const LabelSet& labels) {
  std::vector<DiscoveryMatch> matches;
  for (const auto& label : labels) {
    const auto* fragment = question.catalog.find(label);
    if (fragment == nullptr) continue;
    if (isIgnoredInCatalogue(label, *fragment, question.config) &&
        !AppDiscoveryService::isSelfUpdateLabel(label, question.config))
      continue;
    const auto* bundle = locator.locate(*fragment);
    matches.push_back({.label = label,
                       .fragment = fragment,
                       .bundle = bundle,
                       .receipt = provingReceipt(question, *fragment, bundle),
                       .listedWhenMissing = true});
  }
  return matches;
}

}  // namespace corvane
