// What makes deadlines happen when nobody is looking: looks at the cycle and the armed moment every minute, and
// exactly when the armed moment comes. It installs nothing itself.
#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include "background/deferral_tick.h"
#include "background/repeating_timer.h"
#include "base/lease.h"
#include "base/lifeline.h"
#include "core/preferences/configuration.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Main thread. Model and services outlive it.
class DeferralWatcher {
 public:
  enum class TickResult { idle, busy, engaged };

  static constexpr Duration kTickInterval = 60s;
  static constexpr Duration kFirstTick = 30s;
  static constexpr Duration kTickLeeway = 5s;
  static constexpr Duration kBusyRetry = 15s;

  DeferralWatcher(StatusViewModel& model, const WorkflowServices& services);

  // A second start replaces the timers.
  void start();
  void stop();

  // One watchpoint at a time; it keeps wall time, so that sleep and a changed clock do not move it.
  void armWatchpoint(Date date, std::string_view reason);
  void armWatchpointFromNextAutoLaunch();

  struct Cycle {
    SharedConfiguration config;
    bool isNew = false;
  };
  Cycle reconcileCycle();
  TickResult tick();

 private:
  void watchpointElapsed();
  void rediscover();
  // A cycle that is complete wants nothing of the user.
  void settleCompleteCycle();
  void armMissedEnforcement(const CorvaneConfiguration& config, std::optional<Date> firedAt);
  // Whether an automatic focus deferral hides the prompt from now on.
  bool deferredByFocus(const CorvaneConfiguration& config);
  TickResult nothingPending();
  TickResult engage(DeferralDeadlineStatus status, std::optional<Date> armed, const CorvaneConfiguration& config);
  void announce(DeferralDeadlineStatus status, const CorvaneConfiguration& config);
  [[nodiscard]] bool isCycleComplete(const CorvaneConfiguration& config, const CadenceState& state) const;

  StatusViewModel& model_;
  WorkflowServices services_;
  Logger log_;
  RepeatingTimer ticks_;
  Lease watchpoint_;
  Lease armedChanges_;
  bool pendingCadenceResetDiscovery_ = false;
  Lifeline lifeline_;
};

}  // namespace corvane
