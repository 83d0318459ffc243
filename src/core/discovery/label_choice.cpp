#include "core/discovery/label_choice.h"

#include <algorithm>
#include <tuple>

#include "base/ascii.h"
#include "core/discovery/file_name_folding.h"

namespace corvane {
namespace {

std::string_view withoutExtension(std::string_view bundleName) {
  if (bundleName.size() > 4 && foldedFileName(bundleName.substr(bundleName.size() - 4)) == ".app")
    bundleName.remove_suffix(4);
  return bundleName;
}

// "Quill Draw" as a label would be spelt: "quilldraw".
std::string asLabel(std::string_view name) {
  std::string text;
  for (const char letter : lowercased(std::string(name)))
    if ((letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9')) text += letter;
  return text;
}

bool isPlain(std::string_view label) {
  constexpr std::string_view kEarly[] = {"beta", "alpha", "nightly", "preview", "canary"};
  return label.find_first_of("_-") == std::string_view::npos &&
         std::ranges::none_of(kEarly, [&](auto word) { return label.find(word) != std::string_view::npos; });
}

}  // namespace

const LabelCandidate* chooseLabel(const std::vector<LabelCandidate>& candidates, std::string_view bundleName) {
  if (candidates.empty()) return nullptr;
  const auto name = withoutExtension(bundleName);
  const auto spelt = asLabel(name);
  const auto folded = foldedFileName(name);
  // The smallest wins; false comes before true.
  const auto rank = [&](const LabelCandidate& candidate) {
    const std::string_view label = candidate.label.text;
    const bool sameName = candidate.fragment != nullptr && candidate.fragment->name &&
                          foldedFileName(*candidate.fragment->name) == folded;
    return std::tuple(!candidate.builtIn, !candidate.asked, !candidate.alreadyBound, label != spelt, !sameName,
                      !isPlain(label), label.size(), label);
  };
  return &*std::ranges::min_element(candidates, {}, rank);
}

}  // namespace corvane
