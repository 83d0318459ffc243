#include "app/background_work.h"

#include "core/records/notifications.h"

namespace corvane {

BackgroundWork::BackgroundWork(StatusViewModel& model, const BackgroundServices& services)
    : model_(model),
      main_(services.workflow.main),
      notifications_(services.workflow.notifications),
      backgroundPatcher_(model, services),
      helperPatchObserver_(services),
      helperScheduledDiscoveryObserver_(services),
      selfUpdateScheduler_(model, services),
      deferralWatcher_(model, services.workflow) {}

BackgroundWork::~BackgroundWork() { model_.setClosedAppsPatcher(nullptr); }

void BackgroundWork::start() {
  if (settingsObserver_.active()) return;
  model_.setClosedAppsPatcher(&backgroundPatcher_);
  startServices();
  settingsObserver_ = notifications_.observe<CorvaneSettingsDidChange>(
      [this](const auto&) { main_.post(lifeline_.guard([this] { startServices(); })); });
}

void BackgroundWork::startServices() {
  backgroundPatcher_.start();
  helperPatchObserver_.start();
  helperScheduledDiscoveryObserver_.start();
  selfUpdateScheduler_.start();
  deferralWatcher_.start();
}

}  // namespace corvane
