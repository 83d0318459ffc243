#include "workflow/helper_lifecycle.h"

namespace corvane {

HelperLifecycle::HelperLifecycle(const RoomContext& context, HelperFields& fields) : c_(context), fields_(fields) {}

void HelperLifecycle::load() {
  fields_.firstRunSetupCompleted = c_.services.preferences.readFirstRunSetupCompleted();
  fields_.isManagedByMDM = c_.services.preferences.isManagedByMDM();
}

void HelperLifecycle::refreshHelperState(bool runAutoReset) {
  fields_.helperOperational = c_.services.installation.isOperational();
  fields_.installomatorAvailable = c_.services.files.exists(c_.services.places.installomatorScript());
  c_.crossings.fieldsChanged();
  if (!fields_.installomatorAvailable)
    fields_.sawInstallomatorMissing = true;
  else if (fields_.sawInstallomatorMissing && !c_.fields.gate.isLoading)
    discoverOnceDeployed();
  markFirstRunSetupIfComplete();
  if (runAutoReset) c_.crossings.evaluateAutoReset();
}

void HelperLifecycle::discoverOnceDeployed() {
  fields_.sawInstallomatorMissing = false;
  const auto& inventory = c_.fields.inventory;
  if (inventory.lastDiscoveryDate && !inventory.apps.empty()) return;
  c_.log.info("Installomator is now deployed and no apps are discovered; running discovery.");
  c_.crossings.discoverInstalledApps();
}

void HelperLifecycle::markFirstRunSetupIfComplete() {
  if (fields_.firstRunSetupCompleted) return;
  const auto& service = c_.services.installation;
  if (service.status() != HelperStatus::enabled || !service.isOperational()) return;
  if (!c_.services.files.exists(c_.services.places.installomatorScript())) return;
  fields_.firstRunSetupCompleted = true;
  c_.services.preferences.writeFirstRunSetupCompleted(true);
  c_.crossings.fieldsChanged();
  c_.log.info("First-run setup marked complete.");
}

}  // namespace corvane
