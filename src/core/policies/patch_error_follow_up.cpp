#include "core/policies/patch_error_follow_up.h"

#include <algorithm>
#include <set>
#include <string>

namespace corvane {

namespace {

// The words of the list behind the last "Failed: ", up to the full stop that ends it.
std::set<std::string_view> namedFailures(std::string_view message) {
  constexpr std::string_view kMarker = "Failed: ";
  constexpr std::string_view kBetween = ", \t\r\n";
  std::set<std::string_view> words;
  const auto marker = message.rfind(kMarker);
  if (marker == std::string_view::npos) return words;
  auto rest = message.substr(marker + kMarker.size());
  while (true) {
    const auto first = rest.find_first_not_of(kBetween);
    if (first == std::string_view::npos) return words;
    rest.remove_prefix(first);
    auto word = rest.substr(0, rest.find_first_of(kBetween));
    rest.remove_prefix(word.size());
    const bool ends = word.ends_with('.');
    if (ends) word.remove_suffix(1);
    words.insert(word);
    if (ends) return words;
  }
}

}  // namespace

PatchErrorFollowUp::Decision PatchErrorFollowUp::forUpdateAll(bool completesPatchingOnError,
                                                              std::int64_t deferralTimerErrorMinutes) {
  if (completesPatchingOnError) return MarkCycleComplete{};
  return RetryAfterMinutes{deferralTimerErrorMinutes};
}

Labels PatchErrorFollowUp::erroredLabels(std::string_view message, const Labels& attempted) {
  const auto failures = namedFailures(message);
  Labels errored;
  std::ranges::copy_if(attempted, std::back_inserter(errored),
                       [&](const Label& label) { return failures.contains(label.text); });
  return errored;
}

}  // namespace corvane
