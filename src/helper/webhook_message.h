// What an organisation's chat is told of a run. Pure: a report in, bodies out.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/preferences/configuration.h"
#include "helper/patch_decision.h"

namespace corvane {

// Applications named in one message; a chat cuts off what is longer.
inline constexpr std::size_t kWebhookLines = 20;

struct WebhookMessage {
  std::string title;               // one line
  std::vector<std::string> lines;  // one an application
  friend bool operator==(const WebhookMessage&, const WebhookMessage&) = default;
};

// Absent when the settings do not want to hear of such a run: `failures` of one in which something failed, `all` of
// any in which something was installed, failed or skipped. A run that the helper's own end cut off is none.
[[nodiscard]] std::optional<WebhookMessage> webhookMessage(const RunReport& report, const CorvaneConfiguration& config,
                                                           const std::string& computer);

// JSON for an incoming webhook of Slack, and for a Teams workflow that takes adaptive cards. Nothing in the texts is
// read as markup.
[[nodiscard]] std::string slackBody(const WebhookMessage& message);
[[nodiscard]] std::string teamsBody(const WebhookMessage& message);

}  // namespace corvane
