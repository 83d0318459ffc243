#include "ctl/explain_command.h"

#include <fmt/format.h>

#include <optional>
#include <string>
#include <vector>

#include "ctl/label_judgement.h"
#include "ctl/report.h"
#include "presentation/page_texts.h"
#include "workflow/explanation.h"

namespace corvane::ctl {
namespace {

JsonValue stepJson(const ExplanationStep& step) {
  JsonObject object{
      {"rule", rawName(step.rule)}, {"holds", step.holds}, {"decides", step.decides}, {"detail", step.detail}};
  object.set("key", step.key.empty() ? JsonValue() : JsonValue(step.key));
  object.set("source", step.key.empty() ? JsonValue() : JsonValue(sourceName(step.source)));
  return object;
}

// Of everything there are neither label, name, verdict nor reason.
JsonValue explanationJson(const Explanation& explanation) {
  JsonObject object;
  if (explanation.verdict) {
    object.set("label", explanation.label.text);
    object.set("name", explanation.name);
    object.set("verdict", rawName(*explanation.verdict));
    object.set("reason", explanation.reason);
  }
  JsonArray steps;
  for (const auto& step : explanation.steps) steps.push_back(stepJson(step));
  object.set("steps", std::move(steps));
  object.set("prompt", explanation.prompt);
  object.set("next", explanation.next);
  object.set("nextAt", explanation.nextAt ? JsonValue(iso8601Utc(*explanation.nextAt)) : JsonValue());
  return object;
}

std::optional<Explanation> explained(const Label& label, const Apps& apps, const ExplanationFacts& facts) {
  if (const auto* app = appWith(apps, label)) return explain(*app, facts);
  return explainUnlisted(label, facts);
}

}  // namespace

ExitCode runExplain(const Session& session) {
  const auto& services = session.services;
  const auto facts = explanationFacts(session.model, services, [&services, now = services.clock.now()](Date moment) {
    return momentText(moment, now, services.locale);
  });
  const auto& labels = session.command.labels;
  if (labels.empty()) {
    const auto all = explainAll(facts);
    print(session, explanationJson(all), explanationText(all));
    return ExitCode::done;
  }

  const auto& apps = session.model.fields().inventory.apps;
  JsonArray list;
  std::vector<std::string> texts;
  Labels unknown;
  for (const auto& label : labels) {
    if (const auto told = explained(label, apps, facts)) {
      list.push_back(explanationJson(*told));
      texts.push_back(explanationText(*told));
    } else {
      unknown.push_back(label);
    }
  }
  const auto failure =
      unknown.empty() ? std::nullopt : std::optional(failed(labelTrouble(unknown, {}, apps, facts.apps.config)));
  if (failure && texts.empty()) return tell(session, *failure);
  JsonObject json{{"explanations", std::move(list)}};
  if (failure) {
    json.set("error", *errorJson(failure->error).find("error"));
    if (!session.command.json) tell(session, *failure);
  }
  print(session, json, fmt::format("{}", fmt::join(texts, "\n")));
  return failure ? failure->code : ExitCode::done;
}

}  // namespace corvane::ctl
