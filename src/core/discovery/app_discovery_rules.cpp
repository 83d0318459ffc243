// The rules of discovery that need no scan: what the settings take in, leave out and fold together.

#include <algorithm>
#include <system_error>

#include "base/ascii.h"
#include "base/localized.h"
#include "core/discovery/app_discovery_service.h"
#include "core/discovery/discovery_matching.h"
#include "core/discovery/label_patterns.h"
#include "core/preferences/options_codec.h"
#include "core/records/enumerations.h"

namespace corvane {
namespace {

constexpr std::string_view kOwner = "AppDiscoveryService";
constexpr std::string_view kBuiltInLabels[] = {"corvane", "corvane4"};

bool matches(const std::vector<std::string>& patterns, const Label& label, std::optional<std::string_view> fileName) {
  return matchesAnyLabelPattern(patterns, label.text) || (fileName && matchesAnyLabelPattern(patterns, *fileName));
}

bool isBuiltIn(std::string_view label) {
  return std::ranges::any_of(kBuiltInLabels, [&](auto name) { return equalIgnoringCase(name, label); });
}

}  // namespace

ScanRules AppDiscoveryService::scanRules(const CorvaneConfiguration& config) {
  return {.ignoreExternalDrives = config.ignoreExternalDrives, .ignoredPaths = config.sanitizedIgnoreFilePaths()};
}

bool AppDiscoveryService::isRequiredLabel(const Label& label, std::optional<std::string_view> fileName,
                                          const CorvaneConfiguration& config) {
  return matches(config.requiredLabels, label, fileName);
}

bool AppDiscoveryService::isOptionalLabel(const Label& label, std::optional<std::string_view> fileName,
                                          const CorvaneConfiguration& config) {
  return matches(config.optionalLabels, label, fileName);
}

bool AppDiscoveryService::isIgnoredLabel(const Label& label, std::optional<std::string_view> fileName,
                                         const CorvaneConfiguration& config) {
  return matches(config.ignoredLabels, label, fileName) && !isRequiredLabel(label, fileName, config) &&
         !isOptionalLabel(label, fileName, config);
}

bool AppDiscoveryService::isSelfUpdateLabel(const Label& label, const CorvaneConfiguration& config) {
  const auto own = trimmed(config.selfUpdateLabel.text);
  return !own.empty() && equalIgnoringCase(own, label.text);
}

bool AppDiscoveryService::isHiddenSelfUpdateLabel(const Label& label, const CorvaneConfiguration& config) {
  return (config.selfUpdateEnabled || !config.discoverSelfUpdateLabel) && isSelfUpdateLabel(label, config);
}

bool AppDiscoveryService::isOtherBuiltInSelfProductLabel(const Label& label, const CorvaneConfiguration& config) {
  const auto own = trimmed(config.selfUpdateLabel.text);
  return isBuiltIn(own) && isBuiltIn(label.text) && !equalIgnoringCase(own, label.text);
}

bool AppDiscoveryService::reinstallsCurrentRequiredApps(const CorvaneConfiguration& config) {
  return parseInstallomatorOptions(config.installomatorOptions).forceInstall;
}

Apps AppDiscoveryService::droppingIgnoredApps(const Apps& apps, const CorvaneConfiguration& config) {
  const auto ignoredPaths = config.sanitizedIgnoreFilePaths();
  Apps kept;
  kept.reserve(apps.size());
  std::ranges::copy_if(apps, std::back_inserter(kept), [&](const AppInfo& app) {
    return !isIgnoredLabel(app.label, std::nullopt, config) && !isHiddenSelfUpdateLabel(app.label, config) &&
           !(app.appPath && isIgnoredPath(*app.appPath, ignoredPaths));
  });
  return kept;
}

Labels AppDiscoveryService::droppingIgnoredLabels(const Labels& labels, const CorvaneConfiguration& config) {
  Labels kept;
  std::ranges::copy_if(labels, std::back_inserter(kept),
                       [&](const Label& label) { return !isIgnoredLabel(label, std::nullopt, config); });
  return kept;
}

Apps AppDiscoveryService::mergingScopedDiscovery(const Apps& scoped, const Apps& into,
                                                 const CorvaneConfiguration& config) {
  Apps merged = into;
  for (const auto& app : scoped) {
    const auto old = std::ranges::find(merged, app.label, &AppInfo::label);
    if (old == merged.end())
      merged.push_back(app);
    else
      *old = app;
  }
  return droppingIgnoredApps(merged, config);
}

AppDiscoveryService::LabelCatalogSummary AppDiscoveryService::summarizeLabelCatalog(
    const CorvaneConfiguration& config, const std::filesystem::path& fragmentsPath, LogSink& log) {
  const auto catalog = LabelCatalog::read(fragmentsPath / "labels", Logger(log, kOwner));
  if (!catalog || catalog->empty()) {
    std::error_code problem;
    const bool hasScript = std::filesystem::exists(fragmentsPath.parent_path() / "Installomator.sh", problem);
    return {.availability =
                hasScript ? CatalogAvailability::labelsFolderMissing : CatalogAvailability::installomatorMissing,
            .ignoredLabelCount = 0};
  }
  LabelCatalogSummary summary;
  for (const auto& fragment : catalog->fragments())
    summary.ignoredLabelCount += std::ranges::count_if(
        fragment.labels, [&](const Label& label) { return isIgnoredInCatalogue(label, fragment, config); });
  return summary;
}

std::string AppDiscoveryService::emptyDiscoveryStatusMessage(const LabelCatalogSummary& summary,
                                                             std::int64_t excludedInstalledAppCount) {
  switch (summary.availability) {
    case CatalogAvailability::installomatorMissing:
      return localized(
          "Installomator was not found on this Mac, so no apps can be recognized or updated. If this message stays, "
          "contact your administrator.");
    case CatalogAvailability::labelsFolderMissing:
      return localized(
          "The label catalog of Installomator was not found on this Mac, so no apps can be recognized. If this "
          "message stays, contact your administrator.");
    case CatalogAvailability::ready:
      break;
  }
  if (excludedInstalledAppCount < 1) return localized("No apps that can be updated were found on this Mac.");
  if (excludedInstalledAppCount == 1)
    return localized("No apps to show: 1 installed app is excluded by the current settings.");
  return localized("No apps to show: {} installed apps are excluded by the current settings.",
                   excludedInstalledAppCount);
}

std::string AppDiscoveryService::fingerprintInstalledApps(const CorvaneConstants& constants, LogSink& log) {
  const Logger logger(log, kOwner);
  const auto inventory = BundleInventory::scan(constants, {}, logger);
  if (inventory) return inventory->fingerprint();
  logger.warning(inventory.error().text);
  return {};
}

}  // namespace corvane
