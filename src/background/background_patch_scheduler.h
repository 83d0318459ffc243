// Patches applications that nobody uses, without asking: looks every few hours, renews stale update data, and installs
// what it can certify to be closed. The helper's own pass is its twin; only one of the two runs, as configured.
#pragma once

#include <string>

#include "background/at_login_pass.h"
#include "background/background_services.h"
#include "background/closed_apps.h"
#include "background/repeating_timer.h"
#include "base/lease.h"
#include "base/lifeline.h"
#include "workflow/closed_apps_patcher.h"
#include "workflow/status_view_model.h"

namespace corvane {

// Main thread. Model and services outlive it.
class BackgroundPatchScheduler final : public ClosedAppsPatcher {
 public:
  static constexpr std::chrono::seconds kLeastInterval{3600};
  static constexpr Duration kTickLeeway = 60s;
  static constexpr Duration kHelperPassStale = 3600s;

  BackgroundPatchScheduler(StatusViewModel& model, const BackgroundServices& services);
  ~BackgroundPatchScheduler() override { asked_.abandon(); }

  // A second start replaces the timer; also called when the settings have changed.
  void start();
  void tick();

  // The closed-app request of the workflow and of whoever posts corvaneClosedAppsPatchRequested. The answer may come
  // before this returns.
  void patchClosedApps(Completion<ClosedAppsOutcome> done) override;

 private:
  [[nodiscard]] std::chrono::seconds firstFire(const CorvaneConfiguration& config, std::chrono::seconds interval);
  [[nodiscard]] bool isBusy() const;
  [[nodiscard]] bool helperPassIsActive() const;
  void renewStaleData();
  void runClosedAppPass(const CorvaneConfiguration& config, Completion<ClosedAppsOutcome> done);
  void installClosedApps(const ClosedApps& closed, const CorvaneConfiguration& config,
                         Completion<ClosedAppsOutcome> done);
  void passEnded(bool success, const std::string& problem, std::int64_t installed);
  void tell(const NotificationContent& notice, std::string_view what);

  StatusViewModel& model_;
  BackgroundServices services_;
  Logger log_;
  RepeatingTimer timer_;
  AtLoginPass atLogin_;
  Lease requests_;
  Completion<ClosedAppsOutcome> asked_;  // who waits for the run that is out
  Lifeline lifeline_;
};

}  // namespace corvane
