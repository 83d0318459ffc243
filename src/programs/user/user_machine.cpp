#include "programs/user/user_machine.h"

#include "platform/linux/x11_window_order.h"
#include "programs/user/user_places.h"

namespace corvane {
namespace {

// The helper is told its places; it takes none from an environment.
DetachedProgram helperProgram(const CorvaneConstants& places, const ExecutableBundle& bundle) {
  return {.executable = bundle.helper(),
          .arguments = {"--root", places.root.string(), "--user-home", places.home.string()},
          .environment = {{"PATH", "/usr/bin:/bin:/usr/sbin:/sbin"}, {"LANG", "C.UTF-8"}}};
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
      registration(loop.mainQueue(), helperProgram(places, bundle),
                   {.record = places.userSupportFolder() / "helper-child.json", .socket = places.helperSocket()},
                   [this](std::string_view line) { Logger(log, "HelperRegistration").warning(line); }),
      lock(places.instanceLock()),
      stateLock(places.stateLock()) {}

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
          .registration = registration,
          .bundle = bundle,
          .lock = lock,
          .log = log,
          .places = places,
          .userName = userShortName()};
}

}  // namespace corvane
