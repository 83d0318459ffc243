#include "programs/corvane/session_machine.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/linux/network_interfaces.h"

namespace corvane {
namespace {

// Of this session where there is such a folder, so that nothing is remembered of an earlier one.
std::filesystem::path memoryFolder(const CorvaneConstants& places) {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const auto folder = runtime != nullptr && *runtime != '\0' ? std::filesystem::path(runtime) / "org.corvane.Corvane"
                                                             : places.userSupportFolder();
  std::error_code ignored;
  std::filesystem::create_directories(folder, ignored);
  return folder;
}

}  // namespace

SessionMachine::SessionMachine(UserMachine& machine)
    : user(machine),
      sole(machine.loop.loop(), addresses.session, kApplicationName),
      session(machine.loop.loop(), machine.loop.mainQueue(), machine.work, addresses.session),
      system(machine.loop.loop(), machine.loop.mainQueue(), machine.work, addresses.system),
      focus(addresses),
      launcherEntry(session),
      power(system, machine.power),
      console(system, utmp),
      notifications({.session = session,
                     .main = machine.loop.mainQueue(),
                     .clock = machine.clock,
                     .application = machine.application,
                     .folder = memoryFolder(machine.places)}),
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
