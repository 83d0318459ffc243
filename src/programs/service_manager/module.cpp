// The module that speaks with the service manager.
#include "platform/dbus/bus_link.h"
#include "platform/dbus/session_focus_state.h"
#include "programs/user/service_manager_module.h"

namespace corvane {
namespace {

struct OwnLink {
  BusLink link;
};

class KeptHelper final : OwnLink, public SystemdHelperRegistration {
 public:
  KeptHelper(const ServiceManagerHost& host, const std::optional<std::string>& systemBus, std::optional<UnitFile> known)
      : OwnLink{.link{host.loop, host.main, host.work, systemBus}},
        SystemdHelperRegistration(link, host.main, {.systemBus = systemBus, .known = known, .log = host.log}) {}
};

Heard<UnitFile> ask() { return askUnitFile(BusAddresses::ofEnvironment().system, kHelperUnit); }

std::unique_ptr<HelperRegistration> keep(const ServiceManagerHost& host, std::optional<UnitFile> known) {
  return std::make_unique<KeptHelper>(host, BusAddresses::ofEnvironment().system, known);
}

}  // namespace
}  // namespace corvane

extern "C" [[gnu::visibility("default")]] const corvane::ServiceManagerModule corvane_service_manager;
const corvane::ServiceManagerModule corvane_service_manager{.ask = corvane::ask, .keep = corvane::keep};
