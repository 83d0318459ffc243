// Sees to it that a helper runs: registers one that was never registered, starts one that does not run.
#pragma once

#include <optional>

#include "base/error.h"
#include "base/lease.h"
#include "base/lifeline.h"
#include "base/main_queue.h"
#include "core/client/helper_installation_service.h"

namespace corvane {

// How long a helper that was asked to start may take until it shows a heartbeat, and how often it is looked for.
inline constexpr Duration kHelperStartLimit = 10s;
inline constexpr Duration kHelperStartPoll = 100ms;

// Main thread.
class HelperStart {
 public:
  HelperStart(HelperInstallationService& installation, MainQueue& main) : installation_(installation), main_(main) {}
  ~HelperStart() { done_.abandon(); }
  HelperStart(const HelperStart&) = delete;
  HelperStart& operator=(const HelperStart&) = delete;

  // `done` runs once in a later turn: with success when the helper is operational, else with a text that says
  // what is in the way. Never called again while one is under way. The heartbeat of a helper that was killed stays
  // fresh for a while: where the service manager knows that it ended, only a new heartbeat counts. So it does for one
  // that is just being reset, which starts by itself.
  void ensureRunning(Completion<Status> done);

 private:
  void look(int looksLeft);

  HelperInstallationService& installation_;
  MainQueue& main_;
  Completion<Status> done_;
  std::optional<Date> staleHeartbeat_;
  Lease poll_;
  Lifeline lifeline_;
};

}  // namespace corvane
