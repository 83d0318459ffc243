// Sends word of runs to the organisation's chats. An address is a secret: whoever knows it may write there.
#pragma once

#include <array>
#include <functional>
#include <list>
#include <string>

#include "base/lifeline.h"
#include "base/main_queue.h"
#include "core/logging/logging_service.h"
#include "helper/webhook_message.h"
#include "platform/http_client.h"

namespace corvane {

inline constexpr Duration kWebhookTime = 20s;
// Behind each attempt that failed; then the message is given up.
inline constexpr std::array<Duration, 3> kWebhookPauses = {Duration(30s), Duration(3min), Duration(15min)};
// A chat that is down for a day must not fill the memory.
inline constexpr std::size_t kWebhooksWaiting = 20;

// Main thread. Nothing waits for it, and what is on its way when the helper ends is lost. No address, and no error of
// the web client, which may name one, ever reaches the log.
class Webhooks {
 public:
  struct Services {
    MainQueue& main;
    HttpClient& http;
    LogSink& log;
    std::string computer;
  };
  explicit Webhooks(Services services);

  // What the run's end is worth by the settings, to each chat that has an address. Only https, and http on the
  // loopback.
  void runEnded(const RunReport& report, const CorvaneConfiguration& config);

 private:
  struct Delivery {
    std::string chat;
    std::string url;
    std::string body;
    std::size_t attempts = 0;
    Lease retry;
  };
  using Place = std::list<Delivery>::iterator;
  void deliver(const std::string& chat, const std::optional<std::string>& url, std::string body);
  void attempt(Place place);
  void answered(Place place, const Result<HttpAnswer>& answer);

  Services s_;
  Logger log_;
  std::list<Delivery> deliveries_;
  Lifeline lifeline_;
};

}  // namespace corvane
