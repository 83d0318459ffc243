// Whether the root helper is registered, alive and the one of this bundle, and how it is registered anew.
// It never talks to the helper itself: its heartbeat file is the proof of life.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"
#include "base/lease.h"
#include "base/lifeline.h"
#include "base/main_queue.h"
#include "base/task.h"
#include "base/uuid.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "platform/files.h"
#include "platform/helper_registration.h"
#include "platform/own_bundle.h"

namespace corvane {

class PreferenceManager;

// Texts for the user, localised.
[[nodiscard]] std::string helperStatusText(HelperStatus status);        // "Requires Approval", for the About tab
[[nodiscard]] std::string helperStatusBannerText(HelperStatus status);  // while it is not operational
// The case's name, for log lines and JSON.
[[nodiscard]] std::string_view helperStatusName(HelperStatus status);

struct HelperResetResult {
  HelperStatus status = HelperStatus::unknown;
  bool operational = false;
  friend bool operator==(const HelperResetResult&, const HelperResetResult&) = default;
};

struct HelperResetError {
  static constexpr const char* domain = "CRVHelperReset";
  static constexpr int alreadyInProgressCode = 1;
  // Only the holder of the token may reset: another reset is running, or this token was given back.
  [[nodiscard]] static Error alreadyInProgress();
};

// A heartbeat is written every 15 s; four missed ones are taken for a dead helper. One dated further ahead
// than that belongs to a clock that was set back, and counts as none.
inline constexpr Duration kHelperHeartbeatFresh = 60s;
// How long a reset waits for the first heartbeat of the fresh daemon, and how often it looks.
inline constexpr Duration kHelperResetWait = 10s;
inline constexpr Duration kHelperResetPoll = 250ms;

// Main thread.
class HelperInstallationService {
 public:
  struct Services {
    HelperRegistration& registration;
    Files& files;
    OwnBundle& bundle;
    PreferenceManager& preferences;
    Clock& clock;
    MainQueue& main;
    Entropy& entropy;
  };
  // `heartbeat`: CorvaneConstants::helperHeartbeat().
  HelperInstallationService(Services services, std::filesystem::path heartbeat);
  ~HelperInstallationService();
  HelperInstallationService(const HelperInstallationService&) = delete;
  HelperInstallationService& operator=(const HelperInstallationService&) = delete;

  [[nodiscard]] HelperStatus status() const;
  // Enabled, with a heartbeat younger than 60 s.
  [[nodiscard]] bool isOperational() const;
  [[nodiscard]] bool isResetInFlight() const { return token_.has_value(); }

  // The digest of the helper in the bundle differs from the one of the last registration. False while one
  // of the two is unknown.
  [[nodiscard]] bool helperBinaryHasChanged() const;
  [[nodiscard]] std::optional<std::string> lastRegisteredHelperCDHash() const;
  [[nodiscard]] std::optional<std::string> currentHelperCDHash() const;
  // Stores the current digest when none is stored or it differs; nothing when the bundle has no helper.
  void recordCurrentHelperCDHashIfNeeded();

  // The design's `register()`. May leave the status at requiresApproval. Records the digest on success.
  Status registerHelper();

  // The one reset token; absent while it is out.
  [[nodiscard]] std::optional<Uuid> tryBeginReset();
  // Unregisters, registers anew and waits until the fresh daemon shows a heartbeat, needs approval, or has had
  // 10 seconds. Fails with alreadyInProgress for a token that is not the one out, or with what the platform
  // said. `done` runs exactly once in a later turn; at teardown of the service it is abandoned.
  void performReset(Uuid token, Completion<Result<HelperResetResult>> done);
  // Gives the token back, on every path. Any other token is ignored.
  void endReset(Uuid token);

  void openLoginItemsSettings();

  // When the heartbeat file was last written; absent when there is none.
  [[nodiscard]] std::optional<Date> helperHeartbeatDate() const;
  // 0 when the daemon is loaded; absent when the service manager could not be asked.
  [[nodiscard]] std::optional<std::int32_t> launchctlPrintExitCode() const;
  // 0 when it was started; absent when the service manager could not be asked.
  std::optional<std::int32_t> kickstartRegisteredDaemon();

 private:
  void registerAfresh(Status unregistered);
  void lookForHeartbeat();
  void finishReset(Result<HelperResetResult> result);

  Services s_;
  std::filesystem::path heartbeat_;
  std::optional<Uuid> token_;
  Completion<Result<HelperResetResult>> resetDone_;
  Date resetRegisteredAt_{};
  SteadyTime resetGivesUpAt_{};
  Lease resetPoll_;
  Lifeline lifeline_;
};

}  // namespace corvane
