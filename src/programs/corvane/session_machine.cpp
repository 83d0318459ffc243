#include "programs/corvane/session_machine.h"

#include "platform/linux/network_interfaces.h"
#include "programs/user/user_places.h"

namespace corvane {

SessionMachine::SessionMachine(UserMachine& machine)
    : user(machine),
      sole(machine.loop.loop(), addresses.session, kApplicationName),
      session(machine.loop.loop(), machine.loop.mainQueue(), machine.work, addresses.session),
      system(machine.loop.loop(), machine.loop.mainQueue(), machine.work, addresses.system),
      focus(addresses),
      launcherEntry(session),
      opener(session),
      power(system, machine.power),
      console(system, utmp),
      notifications({.session = session,
                     .main = machine.loop.mainQueue(),
                     .clock = machine.clock,
                     .application = machine.application,
                     .folder = sessionMemoryFolder(kApplicationName)}),
      children(machine.loop.loop(), machine.loop.mainQueue()),
      http(machine.loop.loop(), machine.loop.mainQueue()),
      network({.system = system,
               .main = machine.loop.mainQueue(),
               .http = http,
               .probeURL = [this] { return probeAddress ? probeAddress() : std::nullopt; },
               .hasLink = hasNetworkLink}) {
  machine.application.setBadgeSink([this](const auto& label) { launcherEntry.show(label); });
}

SessionMachine::~SessionMachine() { user.application.setBadgeSink(nullptr); }

}  // namespace corvane
