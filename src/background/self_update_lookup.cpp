#include "background/self_update_lookup.h"

#include <string>

#include "core/discovery/app_discovery_service.h"

namespace corvane {

void SelfUpdateLookup::lookUp(const Apps& apps) {
  const auto config = services_.preferences.loadConfiguration();
  for (const auto& app : apps) {
    const auto version = app.newVersion.value_or("");
    if (SelfUpdateVersionDisplay::isBuildNumber(version) && AppDiscoveryService::isSelfUpdateLabel(app.label, *config))
      SelfUpdateVersionDisplay::refresh(version, services_, [](const std::optional<std::string>&) {});
  }
}

}  // namespace corvane
