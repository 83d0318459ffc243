#include "core/policies/focus_mode_detector.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "base/ascii.h"
#include "core/records/enumerations.h"

namespace corvane {
namespace {

std::string displayText(const std::optional<std::vector<std::string>>& holders,
                        const std::vector<std::string>& counted) {
  if (!holders) return "display assertions unreadable";
  if (holders->empty()) return "no display assertion";
  if (counted.empty()) return fmt::format("display kept awake by ignored {}", fmt::join(*holders, ", "));
  return fmt::format("display kept awake by {}", fmt::join(counted, ", "));
}

}  // namespace

std::vector<std::string> FocusModeDetector::parseIgnoreList(std::string_view ignoreDNDApps) {
  std::vector<std::string> names;
  while (!ignoreDNDApps.empty()) {
    const auto end = std::min(ignoreDNDApps.find(','), ignoreDNDApps.size());
    const auto name = trimmed(ignoreDNDApps.substr(0, end));
    ignoreDNDApps.remove_prefix(std::min(end + 1, ignoreDNDApps.size()));
    if (!name.empty()) names.emplace_back(name);
  }
  return names;
}

FocusModeDetector::Evaluation FocusModeDetector::evaluate(const FocusState& state,
                                                          std::span<const std::string> ignoringApps) {
  const auto disturbed = state.doNotDisturb();
  const auto holders = state.displaySleepHolders();
  auto counted = holders.value_or(std::vector<std::string>());
  std::erase_if(counted, [&](const std::string& holder) {
    return std::ranges::any_of(ignoringApps, [&](const auto& name) { return equalIgnoringCase(name, holder); });
  });
  const auto* focus = !disturbed   ? "Do Not Disturb unreadable"
                      : *disturbed ? "Do Not Disturb on"
                                   : "Do Not Disturb off";
  return {.isActive = disturbed.value_or(false) || !counted.empty(),
          .doNotDisturbUnreadable = !disturbed,
          .displayCheckInconclusive = !holders,
          .diagnostic = fmt::format("{}, {}", focus, displayText(holders, counted))};
}

}  // namespace corvane
