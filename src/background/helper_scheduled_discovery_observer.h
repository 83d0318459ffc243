// Tells the model that the helper has finished a scheduled discovery, which it reads of the helper's state file.
#pragma once

#include <optional>
#include <string>

#include "background/background_services.h"
#include "background/repeating_timer.h"

namespace corvane {

// Main thread. The services outlive it.
class HelperScheduledDiscoveryObserver {
 public:
  static constexpr std::chrono::seconds kPoll{60};
  static constexpr std::chrono::seconds kFresh{600};  // one that ended before is not told at the first start

  explicit HelperScheduledDiscoveryObserver(const BackgroundServices& services);

  // A second start begins anew.
  void start();
  void poll();

 private:
  void seed();
  void remember(const std::string& runID);
  void post(const ScheduledDiscoverySummary& summary);

  BackgroundServices services_;
  Logger log_;
  RepeatingTimer timer_;
  std::optional<std::string> lastObservedRunID_;
};

}  // namespace corvane
