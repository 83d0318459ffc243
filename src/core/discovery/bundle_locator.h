// Where a label's application lies on this Mac, found as the label's tool would find it.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "core/discovery/bundle_inventory.h"
#include "core/discovery/label_fragment.h"

namespace corvane {

// Leans on an inventory that must outlive it. One thread at a time.
class BundleLocator {
 public:
  // `rules` as the inventory was scanned with.
  BundleLocator(const BundleInventory& inventory, std::filesystem::path root, ScanRules rules)
      : inventory_(inventory), root_(std::move(root)), rules_(std::move(rules)) {}

  // The bundle that the tool would take for the label's: at targetDir, /Applications or /Applications/Utilities, else
  // the only one of that name anywhere in /Applications; and in any case only inside targetDir. Never one in the user's
  // home, since the tool would install a second copy into /Applications and leave that one as it is. Null without one,
  // with several that are equally good, or when the label's bundle name takes a shell to know. Valid as long as this
  // locator.
  [[nodiscard]] const InstalledBundle* locate(const LabelFragment& fragment);

 private:
  const InstalledBundle* elsewhere(const std::string& logicalPath);

  const BundleInventory& inventory_;
  std::filesystem::path root_;
  ScanRules rules_;
  std::map<std::string, InstalledBundle> elsewhere_;  // by logical path: what lies outside the scanned folders
};

}  // namespace corvane
