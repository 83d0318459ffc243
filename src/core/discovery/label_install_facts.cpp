#include "core/discovery/label_install_facts.h"

#include <system_error>

namespace corvane {

LabelInstallFacts CatalogInstallFacts::installFacts(const Label& label) const {
  const auto* fragment = catalog_.find(label);
  if (fragment == nullptr) return {};
  LabelInstallFacts facts;
  if (const auto& tool = fragment->updateTool; tool && tool->starts_with('/')) {
    std::error_code problem;
    facts.ownUpdateToolExists = std::filesystem::is_regular_file(root_ / tool->substr(1), problem);
  }
  const auto& processes = fragment->blockingProcesses;
  facts.blocksNothing = processes && !processes->empty() && processes->front() == "NONE";
  return facts;
}

}  // namespace corvane
