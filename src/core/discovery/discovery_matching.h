// From a catalogue and an inventory to the pairs of label and installed application that a scan reports.
#pragma once

#include <optional>
#include <set>
#include <vector>

#include "core/discovery/bundle_locator.h"
#include "core/discovery/label_catalog.h"
#include "core/discovery/package_receipts.h"
#include "core/preferences/configuration.h"
#include "core/records/app_info.h"

namespace corvane {

// One line of the inventory to be. Points into the catalogue and the locator.
struct DiscoveryMatch {
  Label label;
  const LabelFragment* fragment = nullptr;
  const InstalledBundle* bundle = nullptr;  // null when none is there
  std::optional<PackageReceipt> receipt;    // only one that proves the application installed
  bool listedWhenMissing = false;           // required by the settings, or asked for by name
};

// What the settings and the inventory so far have to say.
struct DiscoveryQuestion {
  const CorvaneConfiguration& config;
  const Apps& savedApps;
  const LabelCatalog& catalog;
  const PackageReceipts& receipts;
};

// Whether the settings leave the label out. The name of the fragment's file counts where none of its labels bears it,
// and then for leaving out only: the lists made from a scan know labels and no files, and an application taken in by
// its file's name would be dropped from them again.
[[nodiscard]] bool isIgnoredInCatalogue(const Label& label, const LabelFragment& fragment,
                                        const CorvaneConfiguration& config);

// One match for each installed application and for each required one that is missing.
[[nodiscard]] std::vector<DiscoveryMatch> matchAllLabels(const DiscoveryQuestion& question, BundleLocator& locator);

// One match for each of these labels that the catalogue has and the settings do not ignore; the program's own label is
// never ignored when it is asked for.
[[nodiscard]] std::vector<DiscoveryMatch> matchTheseLabels(const DiscoveryQuestion& question, BundleLocator& locator,
                                                           const LabelSet& labels);

}  // namespace corvane
