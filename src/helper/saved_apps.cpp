#include "helper/saved_apps.h"

namespace corvane {

std::shared_ptr<const Apps> SavedApps::current() {
  const std::pair versions(domains_.managed().version, domains_.user().version);
  if (apps_ && versions == versions_) return apps_;
  apps_ = std::make_shared<const Apps>(preferences_.readDiscoveredApps().value_or(Apps{}));
  versions_ = versions;
  return apps_;
}

}  // namespace corvane
