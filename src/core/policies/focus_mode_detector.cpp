#include "core/policies/focus_mode_detector.h"

#include <algorithm>

namespace corvane {

std::vector<std::string> FocusModeDetector::parseIgnoreList(std::string_view ignoreDNDApps) {
  constexpr std::string_view kBlanks = " \t\r\n";
  std::vector<std::string> names;
  while (!ignoreDNDApps.empty()) {
    const auto end = std::min(ignoreDNDApps.find(','), ignoreDNDApps.size());
    const auto name = ignoreDNDApps.substr(0, end);
    ignoreDNDApps.remove_prefix(std::min(end + 1, ignoreDNDApps.size()));
    const auto first = name.find_first_not_of(kBlanks);
    if (first != std::string_view::npos)
      names.emplace_back(name.substr(first, name.find_last_not_of(kBlanks) - first + 1));
  }
  return names;
}

}  // namespace corvane
