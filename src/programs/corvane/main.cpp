// The application of the logged-in user. It links no window toolkit: the windows module is opened when the
// first window is needed.
#include <dlfcn.h>
#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/background_work.h"
#include "app/command_line.h"
#include "app/diagnostic_job.h"
#include "app/helper_start.h"
#include "app/launch_log.h"
#include "app/launch_registration.h"
#include "app/single_instance.h"
#include "app/windows_module.h"
#include "background/deferral_notifications.h"
#include "background/self_update_lookup.h"
#include "base/localized.h"
#include "core/policies/gui_instance_policy.h"
#include "core/preferences/display_title.h"
#include "diagnostics/usage_telemetry.h"
#include "notifications/crv_notification_delegate.h"
#include "platform/linux/gettext_texts.h"
#include "platform/posix/detached_process.h"
#include "platform/posix/executable_bundle.h"
#include "platform/posix/process_environment.h"
#include "platform/posix/standard_descriptors.h"
#include "presentation/deferral_prompt_controller.h"
#include "presentation/install_confirmation_controller.h"
#include "presentation/settings_controller.h"
#include "programs/corvane/session_machine.h"
#include "programs/user/interruption.h"
#include "programs/user/user_diagnostics.h"
#include "programs/user/user_machine.h"
#include "programs/user/user_places.h"

namespace {

using namespace corvane;

// What a launch that is not the first was started for goes to the instance that runs.
void handOver(std::string_view link) {
  SystemClock clock;
  UvMainLoop loop(clock);
  BusSoleProcess sole(loop.loop(), BusAddresses::ofEnvironment().session, kApplicationName);
  if (const auto claimed = sole.claim(); claimed && !*claimed) (void)sole.handOver(std::string(link));
}

// Opens what the argument or another launch names, from now on.
void listen(BusSoleProcess& sole, NotificationCenter& notifications, const Logger& log) {
  const auto claimed = sole.claim();
  if (!claimed || !*claimed)
    return log.warning("Links cannot reach this instance: " +
                       (claimed ? "another program has its name on the session bus" : claimed.error().text));
  sole.listen(
      [&notifications](const std::string& message) -> Status {
        if (isDeferralPromptLink(message)) notifications.post(ShowDeferralPromptFromNotification());
        return {};
      },
      [log] { log.warning("The session bus is gone; links cannot reach this instance any more."); });
}

// In the browser of the desktop, which knows which one that is.
void openAddress(const std::string& address, const Logger& log) {
  const auto started =
      startDetached({.executable = "/usr/bin/xdg-open", .arguments = {address}, .environment = processEnvironment()});
  if (!started) log.warning("The address could not be opened: " + started.error().text);
}

void reveal(DesktopOpener& opener, const std::filesystem::path& file, const Logger& log) {
  opener.reveal(file, [log](const Status& shown) {
    if (!shown) log.warning("The file could not be shown: " + shown.error().text);
  });
}

// The helper's log, or this program's own where none is there yet.
void revealLog(DesktopOpener& opener, UserMachine& machine, const Logger& log) {
  const auto& places = machine.places;
  reveal(opener, machine.files.exists(places.logFile()) ? places.logFile() : places.userLogFile(), log);
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

int writeDiagnosticBundle(const CorvaneConstants& places, std::span<const std::string_view> arguments) {
  Interruption interruption;
  UserMachine machine(places);
  AskedFor focus;
  const Services services(machine.ports(focus));
  UserDiagnostics diagnostics(machine, services);
  std::error_code none;
  const int code = runDiagnosticJob(
      arguments,
      {.title = AppDisplayTitle(services.preferences.loadConfiguration()).current(),
       .homeOf = diagnostics.homes(),
       .current = std::filesystem::current_path(none),
       .terminal = isatty(STDERR_FILENO) != 0,
       .write = diagnostics.writer(),
       .pump = [&](const auto& done, Duration limit) { return interruption.pump(machine.loop, done, limit); },
       .out = [](std::string_view text) { fmt::print("{}", text); },
       .err = [](std::string_view text) { fmt::print(stderr, "{}", text); }});
  // A script reads the path there, and must not take its lack for success.
  return std::fflush(stdout) == 0 ? code : 1;
}

int launch(UserMachine& machine, const LaunchArguments& arguments) {
  const auto variables = processEnvironment();
  const bool byAgent = GUIInstancePolicy::launchedByAgent({variables.begin(), variables.end()});
  unsetenv(std::string(GUIInstancePolicy::agentVariable).c_str());
  const Logger log(machine.log, "Corvane");
  if (!claimSingleInstance(machine.lock, byAgent, log)) {
    if (arguments.promptLink) handOver(*arguments.promptLink);
    return 0;
  }
  claimState(machine.stateLock, log);

  SessionMachine session(machine);
  Services services(machine.ports(session.focus, session.power));
  session.probeAddress = [&services] { return services.preferences.loadConfiguration()->networkProbeURL; };
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

  CRVNotificationRouter router({.service = session.notifications,
                                .children = session.children,
                                .main = machine.loop.mainQueue(),
                                .clock = machine.clock,
                                .bundle = machine.bundle,
                                .log = machine.log,
                                .environment = processEnvironment()});
  DeferralNotifications notices({.router = router,
                                 .preferences = services.preferences,
                                 .application = machine.application,
                                 .clock = machine.clock,
                                 .locale = machine.locale,
                                 .entropy = machine.entropy,
                                 .log = machine.log});
  SelfUpdateLookup display({.preferences = services.preferences, .http = session.http, .clock = machine.clock});
  UsageTelemetry telemetry({.main = machine.loop.mainQueue(),
                            .clock = machine.clock,
                            .entropy = machine.entropy,
                            .files = machine.files,
                            .http = session.http,
                            .preferences = services.preferences,
                            .notifications = services.notifications,
                            .log = machine.log,
                            .queueFile = machine.places.usageSignals()});
  telemetry.followSettings();
  const auto workflow = services.workflow(notices, display, telemetry);
  StatusViewModel model(workflow);
  // The model begins once the helper is there; a cycle that is complete is shown as such before.
  model.refreshDeadlineDisplay();
  model.keepHelper();
  registerHelperAtLaunch(services.installation, log);

  CRVNotificationDelegate delegate(session.notifications, services.notifications, machine.loop.mainQueue(), config);
  listen(session.sole, services.notifications, log);
  DeferralPromptController prompt(model, workflow);
  InstallConfirmationController confirmation(model, workflow);
  BackgroundWork work(model, {.workflow = workflow,
                              .helperState = services.helperState,
                              .router = router,
                              .center = session.notifications,
                              .network = session.network,
                              .console = session.console,
                              .http = session.http,
                              .bundle = machine.bundle,
                              .userName = userShortName()});
  // Made when the first bundle is asked for.
  std::optional<UserDiagnostics> diagnostics;
  const SettingsParts settings{.telemetry = telemetry,
                               .center = session.notifications,
                               .bundle = machine.bundle,
                               .generateDiagnostics =
                                   [&](Completion<Result<std::filesystem::path>> done) {
                                     if (!diagnostics) diagnostics.emplace(machine, services);
                                     diagnostics->service.toDesktop()(std::move(done));
                                   },
                               .revealFile = [&](const auto& file) { reveal(session.opener, file, log); },
                               .openAddress = [&](const auto& address) { openAddress(address, log); }};
  WindowsHost host{.model = model,
                   .services = workflow,
                   .loop = machine.loop,
                   .prompt = prompt,
                   .promptWindows = services.promptWindows,
                   .confirmation = confirmation,
                   .actions = {.updateItself =
                                   [&] {
                                     if (const auto& own = model.fields().selfUpdate.selfUpdateAvailable)
                                       model.startSelfUpdate(own->label);
                                   },
                               .revealLog = [&] { revealLog(session.opener, machine, log); }},
                   .settings = &settings,
                   .texts = [](std::string_view literal) { return localized(literal); },
                   .logFilePath = [&] { return machine.log.logFilePath(); },
                   .activeChanged =
                       [&](bool active) {
                         machine.application.setActive(active);
                         if (active) services.notifications.post(CorvaneDidBecomeActive());
                       }};
  auto* runWindows = windowsFunction<int(WindowsHost&)>(machine.bundle.path(), kRunWindowsSymbol);
  if (runWindows == nullptr) return 1;

  // What the loaded counts set off and the first load ask the helper, so they wait until one runs or cannot be had.
  HelperStart helperStart(services.installation, machine.loop.mainQueue());
  helperStart.ensureRunning([&](const Status& started) {
    if (!started) log.warning("The root helper is not running: " + started.error().text);
    model.begin();
    work.start();
    model.loadStatus();
    if (arguments.promptLink) services.notifications.post(ShowDeferralPromptFromNotification());
  });
  return runWindows(host);
}

}  // namespace

int main(int argc, char** argv) {
  fillStandardDescriptors();
  speakUsersLanguage(ExecutableBundle().path() / "Contents/Resources/locale");
  signal(SIGPIPE, SIG_IGN);  // a helper that ends while it is written to is an error to tell, not our own end
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
  if (arguments.batchJob == "--generate-diagnostic-bundle") return writeDiagnosticBundle(*places, list);
  if (arguments.batchJob) {
    fmt::print(stderr, "Corvane: {} is not part of this build.\n", *arguments.batchJob);
    return 1;
  }
  if (!displayAtHand()) {
    fmt::print(stderr, "Corvane: no display takes a window; corvanectl does the same work in a terminal.\n");
    return 1;
  }
  UserMachine machine(*places);
  return launch(machine, arguments);
}
