#include "core/discovery/app_discovery_service.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

#include "core/discovery/bundle_reader.h"
#include "core/discovery/discovery_matching.h"
#include "core/discovery/file_name_folding.h"
#include "core/discovery/shared_work.h"

namespace corvane {
namespace {

constexpr std::string_view kOwner = "AppDiscoveryService";

// Team identifiers have ten capitals and digits. Labels also name "Software Update" or an old signer's
// surname there, which no signature carries as its team.
bool isTeamIdentifier(std::string_view text) {
  constexpr std::size_t kTeamLetters = 10;
  return text.size() == kTeamLetters && std::ranges::all_of(text, [](char letter) {
           return (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9');
         });
}

// Whether a text found where a version should stand is one: anything else is what a failed command said.
bool isPlausibleVersion(std::string_view text) {
  constexpr std::size_t kVersionLimit = 40;
  const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
  const auto isLetter = [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
  };
  return !text.empty() && text.size() <= kVersionLimit && (isDigit(text.front()) || isLetter(text.front())) &&
         std::ranges::any_of(text, isDigit) &&
         std::ranges::all_of(text, [](char letter) { return letter > ' ' && letter < '\x7f' && letter != '/'; });
}

std::optional<std::string> nonEmpty(std::optional<std::string> text) {
  if (text && text->empty()) text.reset();
  return text;
}

AppInfo knownOfLabel(const DiscoveryMatch& match) {
  const auto& fragment = *match.fragment;
  AppInfo app;
  app.label = match.label;
  app.name = fragment.name.value_or(match.label.text);
  app.packageID = nonEmpty(fragment.packageID);
  app.expectedTeamID = nonEmpty(fragment.expectedTeamID);
  app.targetDir = fragment.installFolder();
  return app;
}

void addBundle(AppInfo& app, const DiscoveryMatch& match, const BundleFacts& facts) {
  app.appName = std::string(match.bundle->fileName());
  app.appPath = match.bundle->path;
  app.macAppStoreManaged = facts.hasStoreReceipt;
  app.currentBundleVersion = nonEmpty(facts.properties.version);
  if (facts.signature) app.bundleTeamID = facts.signature->teamIdentifier;
  app.teamIDMismatch = app.expectedTeamID && app.bundleTeamID && isTeamIdentifier(*app.expectedTeamID) &&
                       *app.expectedTeamID != *app.bundleTeamID;
}

AppInfo appFrom(const DiscoveryMatch& match, const BundleFacts* facts) {
  auto app = knownOfLabel(match);
  const auto key = match.fragment->installedVersionKey();
  if (facts != nullptr) {
    addBundle(app, match, *facts);
    app.currentVersion = nonEmpty(facts->value(key, key));
  }
  // A label with a function of its own for the version does not ask the receipt; what it would say takes a shell.
  const bool receiptCounts = match.receipt && (facts == nullptr || !match.fragment->declaresCustomVersion);
  if (receiptCounts) app.currentVersion = match.receipt->version;
  return app;
}

// By display name as a Mac's disk compares names, then by label.
Apps sortedByName(Apps apps) {
  std::vector<std::pair<std::string, std::size_t>> order;
  order.reserve(apps.size());
  for (std::size_t i = 0; i < apps.size(); ++i) order.emplace_back(foldedFileName(apps[i].displayName()), i);
  std::ranges::sort(order, [&apps](const auto& a, const auto& b) {
    return std::tie(a.first, apps[a.second].label) < std::tie(b.first, apps[b.second].label);
  });
  Apps sorted;
  sorted.reserve(apps.size());
  for (const auto& [name, at] : order) sorted.push_back(std::move(apps[at]));
  return sorted;
}

}  // namespace

AppDiscoveryService::AppDiscoveryService(CorvaneConfiguration config, bool includeLatestVersions,
                                         std::optional<LabelSet> labelFilter, CorvaneConstants constants, LogSink& log,
                                         Apps savedApps)
    : config_(std::move(config)),
      includeLatestVersions_(includeLatestVersions),
      labelFilter_(std::move(labelFilter)),
      constants_(std::move(constants)),
      log_(log),
      savedApps_(std::move(savedApps)) {}

Result<Apps> AppDiscoveryService::discoverApps() {
  const Logger logger(log_, kOwner);
  Result<LabelCatalog> catalog;
  Result<BundleInventory> inventory;
  bothAtOnce([&] { catalog = LabelCatalog::read(constants_.labelsFolder(), logger); },
             [&] { inventory = BundleInventory::scan(constants_, scanRules(config_), logger); });
  if (!catalog) {
    if (catalog.error().code == ENOENT) return Apps{};
    return std::unexpected(catalog.error());
  }
  if (!inventory) return std::unexpected(inventory.error());
  return discoverApps(*catalog, *inventory);
}

Apps AppDiscoveryService::discoverApps(const LabelCatalog& catalog, const BundleInventory& inventory) {
  const Logger logger(log_, kOwner);
  const PackageReceipts receipts(constants_.root, logger);
  BundleLocator locator(inventory, constants_.root, scanRules(config_));
  const DiscoveryQuestion question{
      .config = config_, .savedApps = savedApps_, .catalog = catalog, .receipts = receipts};
  const auto matches =
      labelFilter_ ? matchTheseLabels(question, locator, *labelFilter_) : matchAllLabels(question, locator);

  std::vector<Result<BundleFacts>> facts(matches.size(), std::unexpected(Error{}));
  forEachShared(matches.size(), [&](std::size_t i) {
    if (matches[i].bundle != nullptr)
      facts[i] = readBundle(matches[i].bundle->path, matches[i].fragment->installedVersionKey());
  });

  Apps apps;
  apps.reserve(matches.size());
  for (std::size_t i = 0; i < matches.size(); ++i) {
    auto match = matches[i];
    if (match.bundle != nullptr && !facts[i]) {
      logger.warning(fmt::format("Application counts as absent: {}", facts[i].error().text));
      match.bundle = nullptr;
      match.receipt.reset();
    } else if (match.bundle != nullptr && !facts[i]->signatureProblem.empty()) {
      logger.verbose(fmt::format("{}: {}", match.bundle->path, facts[i]->signatureProblem));
    }
    const bool installed = match.bundle != nullptr || match.receipt;
    if (!installed && !match.listedWhenMissing) continue;
    apps.push_back(appFrom(match, match.bundle != nullptr ? &*facts[i] : nullptr));
    const auto& latest = match.fragment->appNewVersion;
    if (includeLatestVersions_ && latest && isPlausibleVersion(*latest)) apps.back().newVersion = *latest;
  }
  return sortedByName(std::move(apps));
}

std::int64_t AppDiscoveryService::countInstalledAppsMatchingIgnoredLabels() {
  const Logger logger(log_, kOwner);
  const auto catalog = LabelCatalog::read(constants_.labelsFolder(), logger);
  const auto inventory = BundleInventory::scan(constants_, scanRules(config_), logger);
  if (!catalog || !inventory) return 0;
  BundleLocator locator(*inventory, constants_.root, scanRules(config_));
  std::map<std::string, bool> ignoredOnly;  // by bundle path
  for (const auto& fragment : catalog->fragments()) {
    const auto* bundle = locator.locate(fragment);
    if (bundle == nullptr) continue;
    const bool ignored = std::ranges::all_of(
        fragment.labels, [&](const Label& label) { return isIgnoredInCatalogue(label, fragment, config_); });
    const auto [entry, fresh] = ignoredOnly.try_emplace(bundle->path, ignored);
    if (!fresh) entry->second = entry->second && ignored;
  }
  return std::ranges::count(ignoredOnly, true, &std::pair<const std::string, bool>::second);
}

}  // namespace corvane
