// What the files of the explanation share.
#pragma once

#include <string>
#include <string_view>

#include "workflow/explanation.h"

namespace corvane::explained {

// A setting that is named beside a step.
[[nodiscard]] inline ExplanationStep step(const ExplanationFacts& facts, ExplainedRule rule, bool holds,
                                          std::string detail = {}, std::string_view key = {}) {
  return {.rule = rule,
          .holds = holds,
          .detail = std::move(detail),
          .key = std::string(key),
          .source = key.empty() ? ValueSource::fallback : facts.sourceOf(key)};
}

// What stands in the way of an update that nobody is asked about; an empty text is nothing.
struct Silence {
  std::string obstacle;
  std::string_view key;  // the setting it follows from; empty where none
};
// Of all applications alike.
[[nodiscard]] Silence silenceOfAll(const ExplanationFacts& facts);
[[nodiscard]] Silence silenceOf(const Label& label, const ExplanationFacts& facts);

// When the pass over closed applications is due next; absent where there is none, or where that moment has passed.
[[nodiscard]] std::optional<Date> nextBackgroundPass(const ExplanationFacts& facts);

// Fills `prompt`, `next` and `nextAt` of what is pending: `label` alone, or everything where it is empty.
void tellOutlook(Explanation& explanation, const ExplanationFacts& facts);

}  // namespace corvane::explained
