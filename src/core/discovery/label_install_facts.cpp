#include "core/discovery/label_install_facts.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "base/atomic_file.h"

namespace corvane {

namespace {

bool isRegularFile(const std::filesystem::path& path) {
  std::error_code problem;
  return std::filesystem::is_regular_file(path, problem);
}

}  // namespace

LabelFileInstallFacts::LabelFileInstallFacts(std::filesystem::path labelsFolder, std::filesystem::path root, Logger log)
    : labelsFolder_(std::move(labelsFolder)), root_(std::move(root)), log_(std::move(log)) {}

LabelInstallFacts LabelFileInstallFacts::installFacts(const Label& label) const {
  auto told = ownFile(label);
  if (!told) told = fromCatalog(label);
  if (!told) return {};
  const auto& tool = told->updateTool;
  return {.ownUpdateToolExists = tool && tool->starts_with('/') && isRegularFile(root_ / tool->substr(1)),
          .blocksNothing = told->blocksNothing};
}

LabelFileInstallFacts::Told LabelFileInstallFacts::toldBy(const LabelFragment& fragment) {
  const auto& processes = fragment.blockingProcesses;
  return {.updateTool = fragment.updateTool,
          .blocksNothing = processes && !processes->empty() && processes->front() == "NONE"};
}

std::optional<LabelFileInstallFacts::Told> LabelFileInstallFacts::ownFile(const Label& label) const {
  if (label.text.empty() || label.text.find_first_of("/\0", 0, 2) != std::string::npos) return std::nullopt;
  const auto path = labelsFolder_ / (label.text + ".sh");
  std::error_code problem;
  const auto stamp = std::filesystem::last_write_time(path, problem);
  if (problem) return std::nullopt;
  if (const auto known = known_.find(label); known != known_.end() && known->second.stamp == stamp)
    return known->second.told;
  Known read{.stamp = stamp, .told = std::nullopt};
  if (const auto text = readFile(path, kLabelFragmentLimit))
    if (const auto fragment = parseLabelFragment(label.text, *text);
        fragment && std::ranges::find(fragment->labels, label) != fragment->labels.end())
      read.told = toldBy(*fragment);
  return known_.insert_or_assign(label, std::move(read)).first->second.told;
}

std::optional<LabelFileInstallFacts::Told> LabelFileInstallFacts::fromCatalog(const Label& label) const {
  std::error_code problem;
  const auto stamp = std::filesystem::last_write_time(labelsFolder_, problem);
  if (problem) return std::nullopt;
  if (catalogStamp_ != stamp) {
    auto catalog = LabelCatalog::read(labelsFolder_, log_);
    catalog_ = catalog ? std::move(*catalog) : LabelCatalog();
    catalogStamp_ = stamp;
  }
  const auto* fragment = catalog_.find(label);
  if (fragment == nullptr) return std::nullopt;
  return toldBy(*fragment);
}

}  // namespace corvane
