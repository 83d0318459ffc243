// One check for updates and one pass over closed applications shortly after the user logged in, once a session.
#pragma once

#include <functional>

#include "background/background_services.h"
#include "base/lease.h"
#include "base/lifeline.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Main thread. Model and services outlive it.
class AtLoginPass {
 public:
  static constexpr Duration kFirstLook = 10s;
  // A program that starts with the session asks before the login manager has told of it.
  static constexpr Duration kSessionsLook = 1s;
  static constexpr int kSessionsLooks = 15;
  static constexpr Duration kNotReadyRetry = 15s;
  static constexpr Duration kPowerRetry = 60s;
  static constexpr Duration kNetworkRetry = 30s;

  // Logs under its owner's name. `patchClosedApps` is the pass behind the check.
  AtLoginPass(StatusViewModel& model, const BackgroundServices& services, Logger log,
              std::function<void()> patchClosedApps);

  // Where the settings want it and this session has not had it: from now on it is tried until it runs, the time after
  // the login is over, or the settings do not want it any more. Once a process.
  void schedule(const CorvaneConfiguration& config);

 private:
  [[nodiscard]] static bool wanted(const CorvaneConfiguration& config);
  void attemptIn(Duration delay);
  void attempt();
  void attemptOnline();

  StatusViewModel& model_;
  BackgroundServices services_;
  Logger log_;
  std::function<void()> patchClosedApps_;
  bool atLoginPassScheduled_ = false;
  int sessionsLooks_ = 0;
  Date login_;
  Lease next_;
  Lifeline lifeline_;
};

}  // namespace corvane
