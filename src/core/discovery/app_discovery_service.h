// The direct scan: which applications are installed, and which labels match them. Reads files only; asks no
// helper, runs no shell, writes nothing, and knows no latest version beyond those that fragments state as plain text.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include "base/error.h"
#include "core/discovery/bundle_inventory.h"
#include "core/discovery/label_catalog.h"
#include "core/logging/logging_service.h"
#include "core/places.h"
#include "core/preferences/configuration.h"
#include "core/records/app_info.h"

namespace corvane {

// One scan with fixed parameters. Made and used on any one thread; reads with up to two of its own.
class AppDiscoveryService {
 public:
  enum class CatalogAvailability { ready, installomatorMissing, labelsFolderMissing };
  struct LabelCatalogSummary {
    CatalogAvailability availability = CatalogAvailability::ready;
    std::int64_t ignoredLabelCount = 0;  // labels of the catalogue that the current settings exclude
    friend bool operator==(const LabelCatalogSummary&, const LabelCatalogSummary&) = default;
  };

  // With `includeLatestVersions`, `newVersion` is set for labels that state it as plain text; all other versions are
  // for the helper to find. A label filter limits the scan to these labels: each one in the catalogue is answered, also
  // when its application is not there (then with no version), so that a removed application is noticed. `savedApps` is
  // the inventory so far: of several labels for one bundle, the one bound before is kept.
  AppDiscoveryService(CorvaneConfiguration config, bool includeLatestVersions, std::optional<LabelSet> labelFilter,
                      CorvaneConstants constants, LogSink& log, Apps savedApps = {});

  // The scan, sorted by display name. Listed is a label whose application is installed, and a required one that is not.
  // One label a bundle, see chooseLabel(). An application counts as installed where the label's tool would find it and
  // update it: at targetDir, /Applications or /Applications/Utilities, else at the only other place known, and inside
  // the label's targetDir. So a copy in ~/Applications alone is not offered: the tool would put a second copy beside
  // it. Several copies at other places only are not offered either. The version is that of the package receipt for a
  // label with packageID, else the label's versionKey of Info.plist. A receipt without a bundle counts as installed
  // unless the package went into a folder of applications, from which the bundle was then thrown away. A missing labels
  // folder is an empty list (summarizeLabelCatalog tells why). Fails when the labels folder or /Applications is there
  // but cannot be read.
  [[nodiscard]] Result<Apps> discoverApps();

  // The same on a catalogue and an inventory that were read before, for callers that ask several times.
  [[nodiscard]] Apps discoverApps(const LabelCatalog& catalog, const BundleInventory& inventory);

  // Installed bundles that only ignored labels would manage; 0 where nothing can be read.
  [[nodiscard]] std::int64_t countInstalledAppsMatchingIgnoredLabels();

  // What the scan of this configuration leaves out, for BundleInventory::scan.
  [[nodiscard]] static ScanRules scanRules(const CorvaneConfiguration& config);

  // Looks at the fragments folder and its neighbour Installomator.sh. With labels to read it is ready, whether the
  // script is there or not; without any, the missing script is named first.
  [[nodiscard]] static LabelCatalogSummary summarizeLabelCatalog(const CorvaneConfiguration& config,
                                                                 const std::filesystem::path& fragmentsPath,
                                                                 LogSink& log);

  // The status line of an empty dashboard, localised.
  [[nodiscard]] static std::string emptyDiscoveryStatusMessage(const LabelCatalogSummary& summary,
                                                               std::int64_t excludedInstalledAppCount);

  // Whether the label, or the name of its fragment's file, fits a pattern of the setting. Ignored means fitting an
  // ignore pattern and no required or optional one.
  [[nodiscard]] static bool isIgnoredLabel(const Label& label, std::optional<std::string_view> fileName,
                                           const CorvaneConfiguration& config);
  [[nodiscard]] static bool isRequiredLabel(const Label& label, std::optional<std::string_view> fileName,
                                            const CorvaneConfiguration& config);
  [[nodiscard]] static bool isOptionalLabel(const Label& label, std::optional<std::string_view> fileName,
                                            const CorvaneConfiguration& config);

  // The configured label of the program itself; none while it is blank.
  [[nodiscard]] static bool isSelfUpdateLabel(const Label& label, const CorvaneConfiguration& config);

  // The program's own label while it is not to be shown: switched off in the settings, or updated on its own.
  [[nodiscard]] static bool isHiddenSelfUpdateLabel(const Label& label, const CorvaneConfiguration& config);

  // Without ignored labels, the hidden label of the program and applications at ignored paths.
  [[nodiscard]] static Apps droppingIgnoredApps(const Apps& apps, const CorvaneConfiguration& config);

  // Without ignored labels. The program's own label stays even while it is hidden, since its own update is
  // ordered by label.
  [[nodiscard]] static Labels droppingIgnoredLabels(const Labels& labels, const CorvaneConfiguration& config);

  // Replaces by label in place, appends new ones in their order, removes none; then droppingIgnoredApps().
  [[nodiscard]] static Apps mergingScopedDiscovery(const Apps& scoped, const Apps& into,
                                                   const CorvaneConfiguration& config);

  // BundleInventory::fingerprint() of all that is installed, whatever the settings; empty when /Applications
  // cannot be read.
  [[nodiscard]] static std::string fingerprintInstalledApps(const CorvaneConstants& constants, LogSink& log);

  // The Installomator options hold INSTALL=force, so required labels reinstall even when current.
  [[nodiscard]] static bool reinstallsCurrentRequiredApps(const CorvaneConfiguration& config);

  // The label is the program's other built-in one: "corvane" while "corvane4" is configured, and the other way
  // round. False while a label of neither name is configured.
  [[nodiscard]] static bool isOtherBuiltInSelfProductLabel(const Label& label, const CorvaneConfiguration& config);

 private:
  CorvaneConfiguration config_;
  bool includeLatestVersions_;
  std::optional<LabelSet> labelFilter_;
  CorvaneConstants constants_;
  LogSink& log_;
  Apps savedApps_;
};

}  // namespace corvane
