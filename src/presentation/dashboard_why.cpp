// The fold-out of a row that tells why its application is where it is.
#include "presentation/dashboard_parts.h"

namespace corvane {

void fillWhy(AppStatusRow& row, const Explanation& explanation, const PageTexts& texts) {
  auto& why = row.why;
  why.visible = true;
  if (explanation.verdict) why.title = localized(displayText(*explanation.verdict));
  why.reason = explanation.reason;
  why.prompt = explanation.prompt;
  why.next = explanation.next;
  for (const auto& step : explanation.steps) {
    why.lines.push_back({.key = std::string(rawName(step.rule)),
                         .symbol = step.holds ? "checkmark.circle.fill" : "xmark",
                         .color = step.decides ? ColorRole::orange
                                  : step.holds ? ColorRole::accent
                                               : ColorRole::secondary,
                         .text = localized(displayText(step.rule)),
                         .detail = step.detail,
                         .source = step.key.empty() ? "" : fmt::format("{}, {}", step.key, sourceName(step.source))});
  }
  why.copy = {.text = texts.localized("Copy"),
              .help = texts.localized("Copy the explanation as text"),
              .visible = true,
              .enabled = true};
  why.copyText = explanationText(explanation);
}

}  // namespace corvane
