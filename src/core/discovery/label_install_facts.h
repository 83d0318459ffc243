// What the label files of this Mac tell of how an install treats a running application.
#pragma once

#include <filesystem>
#include <map>
#include <optional>

#include "core/discovery/label_catalog.h"
#include "core/logging/logging_service.h"
#include "core/policies/deferral_install_behavior_resolver.h"

namespace corvane {

// Reads the file that bears the label's name, and the whole catalogue only for a label that hides in a file of
// another name. What was read is kept until the file, or the folder, has changed. Update tools are looked for under
// the root at each question. Main thread.
class LabelFileInstallFacts : public LabelInstallFactsSource {
 public:
  LabelFileInstallFacts(std::filesystem::path labelsFolder, std::filesystem::path root, Logger log);
  [[nodiscard]] LabelInstallFacts installFacts(const Label& label) const override;

 private:
  using Stamp = std::filesystem::file_time_type;
  struct Told {
    std::optional<std::string> updateTool;
    bool blocksNothing = false;
  };
  struct Known {
    Stamp stamp;
    std::optional<Told> told;  // absent: the file is not about the label
  };

  [[nodiscard]] static Told toldBy(const LabelFragment& fragment);
  [[nodiscard]] std::optional<Told> ownFile(const Label& label) const;
  [[nodiscard]] std::optional<Told> fromCatalog(const Label& label) const;

  std::filesystem::path labelsFolder_;
  std::filesystem::path root_;
  Logger log_;
  mutable std::map<Label, Known> known_;
  mutable LabelCatalog catalog_;
  mutable std::optional<Stamp> catalogStamp_;
};

}  // namespace corvane
