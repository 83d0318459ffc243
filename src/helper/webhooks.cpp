#include "helper/webhooks.h"

#include <fmt/format.h>

#include <utility>

#include "base/safe_address.h"

namespace corvane {
namespace {

// Too many messages at once, and the server's own troubles, pass.
bool mayPass(int status) { return status == 408 || status == 429 || status >= 500; }

}  // namespace

Webhooks::Webhooks(Services services) : s_(std::move(services)), log_(s_.log, "Webhooks") {}

void Webhooks::runEnded(const RunReport& report, const CorvaneConfiguration& config) {
  const auto message = webhookMessage(report, config, s_.computer);
  if (!message) return;
  deliver("Slack", config.webhookURLSlack, slackBody(*message));
  deliver("Teams", config.webhookURLTeams, teamsBody(*message));
}

void Webhooks::deliver(const std::string& chat, const std::optional<std::string>& url, std::string body) {
  if (!url || url->empty()) return;
  if (!isSafeAddress(*url))
    return log_.warning(fmt::format("The {} webhook has no https address and is not used.", chat));
  if (deliveries_.size() == kWebhooksWaiting)
    return log_.warning(fmt::format("A message to {} was dropped: too many wait already.", chat));
  attempt(deliveries_.insert(deliveries_.end(), {.chat = chat, .url = *url, .body = std::move(body), .retry = {}}));
}

void Webhooks::attempt(Place place) {
  ++place->attempts;
  s_.http.send({.url = place->url,
                .timeLimit = kWebhookTime,
                .headers = {{"Content-Type", "application/json"}},
                .body = place->body},
               lifeline_.guard([this, place](const Result<HttpAnswer>& answer) { answered(place, answer); }));
}

void Webhooks::answered(Place place, const Result<HttpAnswer>& answer) {
  if (answer && answer->status / 100 == 2) {
    deliveries_.erase(place);
    return;
  }
  const bool tryAgain = place->attempts <= kWebhookPauses.size() && (!answer || mayPass(answer->status));
  if (tryAgain) {
    place->retry = s_.main.after(
        kWebhookPauses.at(place->attempts - 1), [this, place] { attempt(place); }, 1s);
    return;
  }
  log_.warning(fmt::format("A message to {} was given up after {} attempt(s): {}.", place->chat, place->attempts,
                           answer ? fmt::format("answered with {}", answer->status) : "no answer"));
  deliveries_.erase(place);
}

}  // namespace corvane
