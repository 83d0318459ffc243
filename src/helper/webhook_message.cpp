#include "helper/webhook_message.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/json.h"
#include "core/client/helper_messages.h"

namespace corvane {
namespace {

bool isWorthALine(const PatchOutcome& outcome) {
  return outcome.installed || outcome.status != PatchingStatus::success;
}

bool isFailure(const PatchOutcome& outcome) { return outcome.status == PatchingStatus::failure; }

std::string lineOf(const PatchOutcome& outcome) {
  const auto& name = outcome.name.empty() ? outcome.label.text : outcome.name;
  const auto version = outcome.installed ? outcome.version : outcome.targetVersion;
  const auto what = outcome.installed ? std::string("installed")
                                      : fmt::format("{}: {}", isFailure(outcome) ? "failed" : "skipped", outcome.text);
  return version ? fmt::format("{} {}: {}", name, *version, what) : fmt::format("{}: {}", name, what);
}

// Slack reads these three in any text.
std::string escapedForSlack(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '&')
      escaped += "&amp;";
    else if (c == '<')
      escaped += "&lt;";
    else if (c == '>')
      escaped += "&gt;";
    else
      escaped += c;
  }
  return escaped;
}

// A text block reads a little Markdown.
std::string escapedForCard(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (std::string_view("\\`*_[]()#!").find(c) != std::string_view::npos) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

}  // namespace

std::optional<WebhookMessage> webhookMessage(const RunReport& report, const CorvaneConfiguration& config,
                                             const std::string& computer) {
  if (report.error && isHelperError(*report.error, HelperErrorCode::stopping)) return std::nullopt;
  const bool failed = report.error || std::ranges::any_of(report.outcomes, isFailure);
  const bool happened = failed || std::ranges::any_of(report.outcomes, isWorthALine);
  const auto feature = config.webhookFeature;
  if (feature == WebhookFeature::off || !(feature == WebhookFeature::all ? happened : failed)) return std::nullopt;
  WebhookMessage message{.title = fmt::format("{} on {}: {}", config.appTitle, computer,
                                              report.error ? report.error->text : answerOf(report.outcomes).message),
                         .lines = {}};
  std::size_t more = 0;
  for (const auto& outcome : report.outcomes) {
    if (!isWorthALine(outcome)) continue;
    if (message.lines.size() < kWebhookLines)
      message.lines.push_back(lineOf(outcome));
    else
      ++more;
  }
  if (more > 0) message.lines.push_back(fmt::format("and {} more", more));
  return message;
}

std::string slackBody(const WebhookMessage& message) {
  auto text = escapedForSlack(message.title);
  for (const auto& line : message.lines) text += "\n• " + escapedForSlack(line);
  return writeJson(JsonObject{{"text", text}, {"mrkdwn", false}});
}

std::string teamsBody(const WebhookMessage& message) {
  JsonArray body{
      JsonObject{{"type", "TextBlock"}, {"text", escapedForCard(message.title)}, {"weight", "Bolder"}, {"wrap", true}}};
  for (const auto& line : message.lines)
    body.emplace_back(
        JsonObject{{"type", "TextBlock"}, {"text", escapedForCard(line)}, {"spacing", "Small"}, {"wrap", true}});
  const JsonObject card{{"$schema", "http://adaptivecards.io/schemas/adaptive-card.json"},
                        {"type", "AdaptiveCard"},
                        {"version", "1.4"},
                        {"body", std::move(body)}};
  return writeJson(JsonObject{
      {"type", "message"},
      {"attachments",
       JsonArray{JsonObject{
           {"contentType", "application/vnd.microsoft.card.adaptive"}, {"contentUrl", nullptr}, {"content", card}}}}});
}

}  // namespace corvane
