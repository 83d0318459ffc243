// The application of the logged-in user. It links no window toolkit: the windows module is opened when the
// first window is needed.
#include <dlfcn.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "app/command_line.h"
#include "app/helper_start.h"
#include "app/launch_log.h"
#include "app/single_instance.h"
#include "app/windows_module.h"
#include "background/deferral_watcher.h"
#include "core/policies/gui_instance_policy.h"
#include "core/preferences/display_title.h"
#include "platform/dbus/session_focus_state.h"
#include "platform/posix/standard_descriptors.h"
#include "presentation/deferral_prompt_controller.h"
#include "presentation/install_confirmation_controller.h"
#include "programs/user/user_machine.h"

extern char** environ;  // NOLINT(readability-redundant-declaration)

namespace {

using namespace corvane;

GUIInstancePolicy::Environment processEnvironment() {
  GUIInstancePolicy::Environment environment;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    if (const auto equals = text.find('='); equals != std::string_view::npos)
      environment.emplace(text.substr(0, equals), text.substr(equals + 1));
  }
  return environment;
}

template <class Function>
Function* windowsFunction(const std::filesystem::path& bundle, const char* symbol) {
  const auto file = bundle / "Contents/PlugIns" / kWindowsModuleFile;
  void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    fmt::print(stderr, "Corvane: the windows module cannot be opened: {}\n", dlerror());
    return nullptr;
  }
  return reinterpret_cast<Function*>(dlsym(module, symbol));
}

// Of the usage text, which comes before anything else is built.
std::string configuredTitle(const CorvaneConstants& places) {
  UserMachine machine(places);
  AskedFor focus;
  return AppDisplayTitle(Services(machine.ports(focus)).preferences.loadConfiguration()).current();
}

// Whether a window could open. The toolkit would end the process where none can, without a word to act on.
bool displayAtHand() {
  const auto set = [](const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
  };
  if (set("QT_QPA_PLATFORM") || set("WAYLAND_DISPLAY")) return true;
  if (!set("DISPLAY")) return false;
  void* library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return false;
  const auto connect = reinterpret_cast<void* (*)(const char*, int*)>(dlsym(library, "xcb_connect"));
  const auto hasError = reinterpret_cast<int (*)(void*)>(dlsym(library, "xcb_connection_has_error"));
  const auto disconnect = reinterpret_cast<void (*)(void*)>(dlsym(library, "xcb_disconnect"));
  if (connect == nullptr || hasError == nullptr || disconnect == nullptr) return false;
  void* connection = connect(nullptr, nullptr);
  const bool there = hasError(connection) == 0;
  disconnect(connection);
  return there;
}

int launch(UserMachine& machine) {
  const auto environment = processEnvironment();
  const bool byAgent = GUIInstancePolicy::launchedByAgent(environment);
  unsetenv(std::string(GUIInstancePolicy::agentVariable).c_str());
  const Logger log(machine.log, "Corvane");
  if (!claimSingleInstance(machine.lock, byAgent, log)) return 0;
  claimState(machine.stateLock, log);

  SessionFocusState focus;
  Services services(machine.ports(focus));
  const auto config = services.preferences.loadConfiguration();
  machine.log.refreshVerbosityFromPreferences(config->verboseMode, config->debugMode);
  log.info(launchLine({.shortVersion = machine.bundle.shortVersion(),
                       .build = machine.bundle.version(),
                       .helperStatus = services.installation.status(),
                       .silentLaunch = services.preferences.readManagedSilentLaunchEnabled(),
                       .backgroundLaunch = false,
                       .showDashboard = true,  // every launch opens the window
                       .uid = getuid()}));

  const auto watching = services.preferences.startWatching();
  // Before the model, so that the log of what a change does is as detailed as the change says.
  const auto verbosity = services.notifications.observe<CorvaneSettingsDidChange>([&](const auto&) {
    const auto fresh = services.preferences.loadConfiguration();
    machine.log.refreshVerbosityFromPreferences(fresh->verboseMode, fresh->debugMode);
  });
  StatusViewModel model(services.workflow());
  // The model begins once the helper is there; a cycle that is complete is shown as such before.
  model.refreshDeadlineDisplay();

  const auto workflow = services.workflow();
  DeferralPromptController prompt(model, workflow);
  InstallConfirmationController confirmation(model, workflow);
  DeferralWatcher watcher(model, workflow);
  WindowsHost host{.model = model,
                   .services = workflow,
                   .loop = machine.loop,
                   .prompt = prompt,
                   .promptWindows = services.promptWindows,
                   .confirmation = confirmation};
  auto* runWindows = windowsFunction<int(WindowsHost&)>(machine.bundle.path(), kRunWindowsSymbol);
  if (runWindows == nullptr) return 1;

  // What the loaded counts set off and the first load ask the helper, so they wait until one runs or cannot be had.
  HelperStart helperStart(services.installation, machine.loop.mainQueue());
  helperStart.ensureRunning([&](const Status& started) {
    if (!started) log.warning("The root helper is not running: " + started.error().text);
    model.begin();
    model.loadStatus();
    watcher.start();
  });
  return runWindows(host);
}

}  // namespace

int main(int argc, char** argv) {
  fillStandardDescriptors();
  const std::vector<std::string_view> list(argv + 1, argv + argc);
  const auto arguments = LaunchArguments::parse(list);
  const auto places = placesFromEnvironment();
  if (arguments.help) {
    fmt::print("{}", usageText(places ? configuredTitle(*places) : "Corvane"));
    return 0;
  }
  if (!places) {
    fmt::print(stderr, "Corvane: {}\n", places.error().text);
    return 1;
  }
  if (arguments.batchJob) {
    fmt::print(stderr, "Corvane: {} is not part of this build.\n", *arguments.batchJob);
    return 1;
  }
  if (!displayAtHand()) {
    fmt::print(stderr, "Corvane: no display takes a window; corvanectl does the same work in a terminal.\n");
    return 1;
  }
  UserMachine machine(*places);
  return launch(machine);
}
