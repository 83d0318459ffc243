// What a catalogue tells of how its labels treat a running application.
#pragma once

#include <filesystem>

#include "core/discovery/label_catalog.h"
#include "core/policies/deferral_install_behavior_resolver.h"

namespace corvane {

// Leans on a catalogue that must outlive it. The update tool is looked for under the root. Any thread.
class CatalogInstallFacts : public LabelInstallFactsSource {
 public:
  CatalogInstallFacts(const LabelCatalog& catalog, std::filesystem::path root)
      : catalog_(catalog), root_(std::move(root)) {}
  [[nodiscard]] LabelInstallFacts installFacts(const Label& label) const override;

 private:
  const LabelCatalog& catalog_;
  std::filesystem::path root_;
};

}  // namespace corvane
