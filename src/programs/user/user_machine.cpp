#include "programs/user/user_machine.h"

#include <dlfcn.h>

#include "platform/linux/x11_window_order.h"
#include "platform/posix/child_helper_registration.h"
#include "programs/user/helper_keeper.h"
#include "programs/user/service_manager_module.h"
#include "programs/user/user_places.h"

namespace corvane {
namespace {

// The helper is told its places; it takes none from an environment.
DetachedProgram helperProgram(const CorvaneConstants& places, const ExecutableBundle& bundle) {
  return {.executable = bundle.helper(),
          .arguments = {"--root", places.root.string(), "--user-home", places.home.string()},
          .environment = {{"PATH", "/usr/bin:/bin:/usr/sbin:/sbin"}, {"LANG", "C.UTF-8"}}};
}

// Null, with a line in the log, for a bundle that lacks it.
const ServiceManagerModule* openServiceManager(const ExecutableBundle& bundle, const Logger& log) {
  const auto file = bundle.path() / "Contents/PlugIns" / kServiceManagerModuleFile;
  void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  const auto* door = module == nullptr ? nullptr : dlsym(module, kServiceManagerSymbol);
  if (door == nullptr) log.warning(std::string("The service manager cannot be asked for the helper: ") + dlerror());
  return static_cast<const ServiceManagerModule*>(door);
}

std::unique_ptr<HelperRegistration> helperRegistration(UserMachine& machine) {
  const Logger log(machine.log, "HelperRegistration");
  const auto warn = [log](std::string_view line) { log.warning(line); };
  const ServiceManagerModule* manager = nullptr;
  Heard<UnitFile> unit = std::unexpected(Silence::nobody);
  const auto ask = [&] {
    manager = openServiceManager(machine.bundle, log);
    if (manager != nullptr) unit = manager->ask();
    return unit;
  };
  if (helperKeeper(machine.places.root, ask) == HelperKeeper::serviceManager)
    return manager->keep(
        {.loop = machine.loop.loop(), .main = machine.loop.mainQueue(), .work = machine.work, .log = warn},
        unit ? std::optional(*unit) : std::nullopt);
  return std::make_unique<ChildHelperRegistration>(
      machine.loop.mainQueue(), helperProgram(machine.places, machine.bundle),
      ChildHelperRegistration::Paths{.record = machine.places.userSupportFolder() / "helper-child.json",
                                     .socket = machine.places.helperSocket()},
      warn);
}

}  // namespace

UserMachine::UserMachine(CorvaneConstants itsPlaces, const std::filesystem::path& executable)
    : places(std::move(itsPlaces)),
      loop(clock, clock.jumps()),
      log({.system = places.logFile(), .archive = places.logArchiveFolder(), .fallback = places.userLogFile()},
          LogRole::user, files, clock, [this] { return locale.calendar(); }),
      bundle(executable),
      watch(loop.loop(), loop.mainQueue()),
      domains(
          {.user = places.userPreferencesPath(), .managed = places.managedPreferencesPath()},
          [this](std::string_view line) { Logger(log, "PreferenceManager").warning(line); },
          [this](const std::filesystem::path& folder, std::function<void()> changed) {
            return watch.watch(folder, std::move(changed));
          }),
      processes(loop.mainQueue(), makeX11WindowOrder()),
      channel(loop.loop(), loop.mainQueue(), places.helperSocket()),
      lock(places.instanceLock()),
      stateLock(places.stateLock()),
      registration(helperRegistration(*this)) {}

Ports UserMachine::ports(FocusState& focus, PowerSource& powerSource) {
  return {.main = loop.mainQueue(),
          .work = work,
          .clock = clock,
          .locale = locale,
          .entropy = entropy,
          .files = files,
          .domains = domains,
          .processes = processes,
          .application = application,
          .focus = focus,
          .power = powerSource,
          .channel = channel,
          .registration = *registration,
          .bundle = bundle,
          .lock = lock,
          .log = log,
          .places = places,
          .userName = userShortName()};
}

}  // namespace corvane
