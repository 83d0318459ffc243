// The five services that work while nobody looks, and their restart when the settings change.
#pragma once

#include "background/background_patch_scheduler.h"
#include "background/deferral_watcher.h"
#include "background/helper_background_patch_observer.h"
#include "background/helper_scheduled_discovery_observer.h"
#include "background/self_update_scheduler.h"

namespace corvane {

// Main thread. Model and services outlive it.
class BackgroundWork {
 public:
  BackgroundWork(StatusViewModel& model, const BackgroundServices& services);
  ~BackgroundWork();
  BackgroundWork(const BackgroundWork&) = delete;
  BackgroundWork& operator=(const BackgroundWork&) = delete;

  // Starts them in their order, once; from then on each change of the settings starts them anew.
  void start();

 private:
  void startServices();

  StatusViewModel& model_;
  MainQueue& main_;
  NotificationCenter& notifications_;
  BackgroundPatchScheduler backgroundPatcher_;
  HelperBackgroundPatchObserver helperPatchObserver_;
  HelperScheduledDiscoveryObserver helperScheduledDiscoveryObserver_;
  SelfUpdateScheduler selfUpdateScheduler_;
  DeferralWatcher deferralWatcher_;
  Lease settingsObserver_;
  Lifeline lifeline_;
};

}  // namespace corvane
