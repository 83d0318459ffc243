// Turns what the helper writes of its own passes into broadcasts: that one began, advances, is over, and what it did.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "background/background_services.h"
#include "background/repeating_timer.h"

namespace corvane {

// Main thread. The end of a pass in flight and its completion are independent events; either may come first. The
// services outlive it.
class HelperBackgroundPatchObserver {
 public:
  static constexpr std::chrono::seconds kIdlePoll{60};
  static constexpr std::chrono::seconds kBusyPoll{5};
  static constexpr std::chrono::seconds kStale{3600};  // a record in flight for longer counts as over
  static constexpr std::chrono::seconds kFresh{600};   // what is older is not told to the user any more

  explicit HelperBackgroundPatchObserver(const BackgroundServices& services);

  // A second start begins anew; also called when the settings have changed.
  void start();
  void poll();

 private:
  struct ProgressFingerprint {
    std::string runID;
    std::int64_t completedCount = 0;
    std::optional<std::string> currentLabel;
    std::optional<std::string> currentLabelDisplayName;
    friend bool operator==(const ProgressFingerprint&, const ProgressFingerprint&) = default;
  };

  void seed(bool notify);
  void schedule(std::chrono::seconds interval);
  void observe(const std::optional<HelperBackgroundCurrentRun>& run, bool notify);
  void began(const HelperBackgroundCurrentRun& run, bool notify);
  void endInFlight(std::string_view reason);
  void remember(const std::string& runID);
  void completed(const BackgroundPatchSummary& summary, bool notify);
  void tell(const NotificationContent& notice, Delivered delivered);
  [[nodiscard]] std::chrono::seconds ageOf(Date moment) const;

  BackgroundServices services_;
  Logger log_;
  RepeatingTimer timer_;
  std::chrono::seconds currentInterval_ = kIdlePoll;
  std::optional<std::string> lastObservedRunID_;
  std::optional<std::string> startedRunID_;
  std::optional<ProgressFingerprint> lastProgressFingerprint_;
};

}  // namespace corvane
