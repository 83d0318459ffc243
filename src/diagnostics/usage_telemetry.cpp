#include "diagnostics/usage_telemetry.h"

#include <algorithm>
#include <utility>

#include "base/ascii.h"

namespace corvane {
namespace {

constexpr int kFirstServerError = 500;
constexpr int kTooManyRequests = 429;
constexpr int kRequestTimeout = 408;

// Another try may do better.
bool isPassing(int status) {
  return status >= kFirstServerError || status == kTooManyRequests || status == kRequestTimeout;
}

JsonValue toJson(const UsageSignal& signal, Date now, const std::string& session) {
  JsonObject parameters;
  for (const auto& [name, value] : signal.parameters) parameters.set(name, value);
  JsonObject object{{"name", signal.name}, {"time", iso8601Utc(now)}, {"session", session}};
  object.set("parameters", std::move(parameters));
  if (signal.floatValue) object.set("value", *signal.floatValue);
  return object;
}

}  // namespace

UsageTelemetry::UsageTelemetry(UsageTelemetryServices services, std::string_view appID)
    : services_(std::move(services)), log_(services_.log, "UsageTelemetry"), appID_(trimmed(appID)) {}

void UsageTelemetry::followSettings() {
  settings_ = services_.notifications.observe<CorvaneSettingsDidChange>([this](const auto&) { obeySettings(); });
  obeySettings();
}

void UsageTelemetry::obeySettings() {
  if (!services_.preferences.loadConfiguration()->telemetryEnabled) return stop();
  start();
  // An address that has come meanwhile gets what waits.
  if (client_ && !client_->queue.empty() && !client_->next.active()) sendAfter(kGatheringTime);
}

void UsageTelemetry::start() {
  if (appID_.empty()) {
    if (!std::exchange(warnedAboutMissingID_, true))
      log_.info("TelemetryEnabled is on, but no TelemetryDeck App ID is configured.");
    return;
  }
  if (client_) return;
  client_ = std::make_unique<Client>(services_.queueFile, services_.files, log_);
  client_->session = services_.entropy.uuid().text();
  if (!client_->queue.empty()) sendAfter(kGatheringTime);
}

// The answer to a batch that is out finds nobody.
void UsageTelemetry::stop() {
  if (!client_) return;
  client_->queue.clear();
  client_ = nullptr;
}

void UsageTelemetry::send(const UsageSignal& signal) {
  if (!client_ || endpoint().empty()) return;
  client_->queue.push(toJson(signal, services_.clock.now(), client_->session));
  if (!client_->sending && !client_->next.active()) sendAfter(kGatheringTime);
}

std::string UsageTelemetry::endpoint() {
  const auto config = services_.preferences.loadConfiguration();
  std::string address(trimmed(config->telemetryEndpoint));
  if (address.empty() && !std::exchange(toldAboutMissingEndpoint_, true))
    log_.info("TelemetryEndpoint is empty, so no usage signal is sent.");
  return address;
}

void UsageTelemetry::sendAfter(Duration delay) {
  client_->next = services_.main.after(
      delay,
      [this] {
        client_->next = {};
        sendBatch();
      },
      delay / 10);
}

void UsageTelemetry::sendBatch() {
  const auto address = endpoint();
  if (address.empty() || client_->sending || client_->queue.empty()) return;
  auto batch = client_->queue.front(kMostInABatch);
  client_->sending = true;
  services_.http.send(
      {.url = address,
       .timeLimit = kTimeLimit,
       .headers = {{"Content-Type", "application/json"}},
       .body = writeJson(JsonObject{{"version", 1}, {"appID", appID_}, {"signals", batch}})},
      client_->lifeline.guard([this, batch](const Result<HttpAnswer>& answer) { take(batch, answer); }));
}

// What the server refuses for good is dropped, or it would stand in the way of all that follows.
void UsageTelemetry::take(const JsonArray& batch, const Result<HttpAnswer>& answer) {
  client_->sending = false;
  if (!answer || isPassing(answer->status)) {
    ++client_->failures;
    return sendAfter(backOff());
  }
  client_->failures = 0;
  client_->queue.pop(batch);
  if (!client_->queue.empty()) sendAfter(kGatheringTime);
}

Duration UsageTelemetry::backOff() {
  auto delay = kFirstBackOff;
  for (int i = 1; i < client_->failures && delay < kLongestBackOff; ++i) delay *= 2;
  delay = std::min<Duration>(delay, kLongestBackOff);
  const auto spread = delay / 4;
  return delay - spread +
         Duration(
             static_cast<std::int64_t>(services_.entropy.below(static_cast<std::uint64_t>((2 * spread).count()) + 1)));
}

}  // namespace corvane
