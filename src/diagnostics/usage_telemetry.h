// Anonymous usage signals to the address in the settings. Off means off: nothing is kept, nothing is sent.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/lease.h"
#include "base/lifeline.h"
#include "base/main_queue.h"
#include "core/preferences/preference_manager.h"
#include "core/records/usage_signals.h"
#include "diagnostics/usage_queue.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "platform/files.h"
#include "platform/http_client.h"

namespace corvane {

struct UsageTelemetryServices {
  MainQueue& main;
  const Clock& clock;
  Entropy& entropy;
  Files& files;
  HttpClient& http;
  PreferenceManager& preferences;
  NotificationCenter& notifications;
  LogSink& log;
  std::filesystem::path queueFile;
};

// Main thread. Signals wait a while for others to go with; a server that does not answer is asked ever more seldom.
class UsageTelemetry final : public UsageSignals, public TelemetrySwitch {
 public:
  // Of the application, for whoever receives the signals; the same for all.
  static constexpr std::string_view kAppID = "5D1E7A42-90B3-4C6E-A1F8-2B7C3E9D6F10";
  static constexpr std::size_t kMostInABatch = 20;
  static constexpr Duration kGatheringTime = 10s;
  static constexpr Duration kTimeLimit = 30s;
  // After a first failure; it doubles with each further one. A quarter either way is drawn by chance.
  static constexpr Duration kFirstBackOff = 60s;
  static constexpr Duration kLongestBackOff = 6h;

  explicit UsageTelemetry(UsageTelemetryServices services, std::string_view appID = kAppID);

  // Starts when the settings say so, and from now on follows changes of them, whoever makes them.
  void followSettings();

  [[nodiscard]] bool started() const override { return client_ != nullptr; }
  // What an earlier run could not send goes first.
  void start() override;
  // What waits is dropped.
  void stop() override;
  void send(const UsageSignal& signal) override;

 private:
  struct Client {
    Client(std::filesystem::path file, Files& files, const Logger& log) : queue(std::move(file), files, log) {}
    UsageQueue queue;
    std::string session;  // of this start; nothing of the user or the machine is in it
    bool sending = false;
    int failures = 0;
    Lease next;
    Lifeline lifeline;
  };

  void obeySettings();
  [[nodiscard]] std::string endpoint();
  void sendAfter(Duration delay);
  void sendBatch();
  void take(const JsonArray& batch, const Result<HttpAnswer>& answer);
  [[nodiscard]] Duration backOff();

  UsageTelemetryServices services_;
  Logger log_;
  std::string appID_;
  bool warnedAboutMissingID_ = false;
  bool toldAboutMissingEndpoint_ = false;
  std::unique_ptr<Client> client_;  // null while stopped
  Lease settings_;
};

}  // namespace corvane
