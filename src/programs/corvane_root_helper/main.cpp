// The root helper: chooses its adapters, builds its rooms and serves until it is told to end.
#include <fmt/format.h>
#include <grp.h>
#include <malloc.h>
#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <uv.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>

#include "base/notification_center.h"
#include "core/discovery/label_install_facts.h"
#include "core/history/label_history_caches.h"
#include "core/history/receipt_manager.h"
#include "core/logging/logging_service.h"
#include "core/preferences/preference_manager.h"
#include "core/preferences/setting_values.h"
#include "helper/app_discoverer.h"
#include "helper/console_preference_domains.h"
#include "helper/console_user.h"
#include "helper/heartbeat.h"
#include "helper/helper_listener.h"
#include "helper/helper_options.h"
#include "helper/helper_service.h"
#include "helper/helper_state_file.h"
#include "helper/own_work.h"
#include "helper/patch_runner.h"
#include "helper/root_trust.h"
#include "helper/run_desk.h"
#include "helper/run_record.h"
#include "helper/saved_apps.h"
#include "helper/stager.h"
#include "helper/system_zone.h"
#include "helper/tool_keeper.h"
#include "helper/version_checker.h"
#include "helper/webhooks.h"
#include "platform/linux/linux_running_applications.h"
#include "platform/linux/sys_network_probe.h"
#include "platform/linux/sys_power_source.h"
#include "platform/net/curl_http_client.h"
#include "platform/posix/folder_ownership.h"
#include "platform/posix/posix_files.h"
#include "platform/posix/standard_descriptors.h"
#include "platform/posix/system_clock.h"
#include "platform/posix/system_entropy.h"
#include "platform/uv/uv_child_processes.h"
#include "platform/uv/uv_end_signals.h"
#include "platform/uv/uv_main_loop.h"
#include "platform/uv/uv_work_queue.h"

namespace corvane {
namespace {

// A stop that takes longer than this (a peer that does not read) is cut short.
constexpr Duration kStopLimit = kToolStopGrace + 5s;
// How often what work has left free goes back to the system. A check of many labels takes megabytes for a minute, the
// helper lives for months.
constexpr Duration kTidying = 1min;
// How often old staged installers are looked for where nothing new is staged.
constexpr Duration kClearing = 24h;
constexpr const char* kNobodysHome = "/var/empty";

// Where the tool is fetched from: on a tree that somebody made only when told so.
std::optional<std::string> toolHost(const HelperOptions& options) {
  if (options.installomatorSource) return options.installomatorSource;
  return options.root == "/" ? std::optional<std::string>(kToolHost) : std::nullopt;
}

std::optional<std::string> findZsh() {
  for (const char* path : {"/bin/zsh", "/usr/bin/zsh"})
    if (access(path, X_OK) == 0) return path;
  return std::nullopt;
}

// Whom children run as that only look. Root itself never looks: without an account that has no rights nothing is.
Result<std::optional<std::pair<uid_t, gid_t>>> unprivilegedAccount() {
  if (geteuid() != 0) return std::nullopt;
  const auto* nobody = getpwnam("nobody");
  if (!nobody || nobody->pw_uid == 0)
    return failure("CRVHelper", ENOENT, "This machine has no account nobody to look for versions with");
  return std::pair{nobody->pw_uid, nobody->pw_gid};
}

// Without the domain behind it; people know their machines by that.
std::string computerName() {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0) return "this Mac";
  const std::string_view whole = name;
  return std::string(whole.substr(0, whole.find('.')));
}

std::string ownHome(const ConsoleUserSource& console) {
  if (geteuid() != 0) {
    const auto user = console.current();
    return user ? user->home.string() : "/";
  }
  const auto* root = getpwuid(0);
  return root ? root->pw_dir : "/";
}

// What an ordinary program may still write; nothing where that cannot be told.
std::uint64_t freeBytes(const std::filesystem::path& folder) {
  std::error_code error;
  const auto space = std::filesystem::space(folder, error);
  return error ? 0 : space.available;
}

CorvaneConstants constantsFor(const std::filesystem::path& root, const std::optional<ConsoleUser>& user) {
  return {.root = root, .home = user ? user->home : std::filesystem::path(kNobodysHome)};
}

// All of a helper, in the order in which each leans on those before it.
class Daemon {
 public:
  Daemon(const HelperOptions& options, ConsoleUserSource console)
      : options_(options),
        console_(std::move(console)),
        places_(constantsFor(options.root, std::nullopt)),
        loop_(clock_, clock_.jumps()),
        main_(loop_.mainQueue()),
        notifications_(main_),
        log_({.system = places_.logFile(), .archive = places_.logArchiveFolder(), .fallback = std::nullopt},
             LogRole::helper, files_, clock_, [this] { return zone_.calendar(); }),
        domains_({.managed = places_.managedPreferencesPath(),
                  .consoleUser = [this] { return console_.current(); },
                  .userFile = [this](const auto& home) { return constantsForHome(home).userPreferencesPath(); }},
                 [this](std::string_view text) { Logger(log_, "Preferences").warning(text); }),
        preferences_(domains_, notifications_, log_),
        savedApps_(domains_, preferences_),
        receipts_(places_.receipts(), files_, log_),
        histories_(receipts_, files_),
        state_(places_.helperState(), places_.helperDiscoveredApps(), files_, clock_, log_),
        processes_(main_),
        network_(main_),
        children_(loop_.loop(), main_),
        http_(loop_.loop(), main_),
        versions_({.children = children_, .main = main_, .entropy = entropy_, .log = log_}, findZsh(),
                  unprivilegedAccount),
        discoverer_({.work = work_,
                     .main = main_,
                     .clock = clock_,
                     .log = log_,
                     .versions = versions_,
                     .setting = [this] { return setting(); }}),
        record_(places_.supportFolder() / "helper-run.json", files_, clock_, log_),
        staged_(places_.stagingFolder(), clock_, log_),
        stagingRecord_(places_.supportFolder() / "helper-staging.json", files_, clock_, log_, kToolStopGrace, "staged"),
        installFacts_(places_.labelsFolder(), places_.root, Logger(log_, "Staging")),
        stager_({.children = children_,
                 .main = main_,
                 .work = work_,
                 .clock = clock_,
                 .log = log_,
                 .discoverer = discoverer_,
                 .staged = staged_,
                 .record = stagingRecord_,
                 .setting = [this] { return setting(); },
                 .facts = installFacts_,
                 .freeBytes = freeBytes,
                 .toolHome = ownHome(console_),
                 .ownUid = geteuid()}),
        runner_({.children = children_,
                 .main = main_,
                 .clock = clock_,
                 .log = log_,
                 .receipts = receipts_,
                 .discoverer = discoverer_,
                 .record = record_,
                 .staged = staged_,
                 .setting = [this] { return setting(); },
                 .toolHome = ownHome(console_),
                 .ownUid = geteuid()}),
        webhooks_({.main = main_, .http = http_, .log = log_, .computer = computerName()}),
        desk_({.log = log_,
               .runner = runner_,
               .stager = stager_,
               .runEnded = [this](const RunReport& report) { webhooks_.runEnded(report, setting().config); }}),
        service_({.main = main_,
                  .discoverer = discoverer_,
                  .versions = versions_,
                  .desk = desk_,
                  .status = [this] { return status(); }}),
        ownWork_({.main = main_,
                  .clock = clock_,
                  .entropy = entropy_,
                  .log = log_,
                  .files = files_,
                  .preferences = preferences_,
                  .histories = histories_,
                  .discoverer = discoverer_,
                  .desk = desk_,
                  .state = state_,
                  .processes = processes_,
                  .power = power_,
                  .network = network_,
                  .setting = [this] { return setting(); },
                  .calendar = [this] { return zone_.calendar(); },
                  .toolReady = [this] { return checkTool(places_.installomatorScript(), places_.root, geteuid()); },
                  .firstWork = options_.ownWorkAfter}),
        toolKeeper_({.main = main_,
                     .work = work_,
                     .clock = clock_,
                     .log = log_,
                     .http = http_,
                     .children = children_,
                     .setting = [this] { return setting(); },
                     .zsh = findZsh(),
                     .account = unprivilegedAccount,
                     .host = toolHost(options_),
                     .ownUid = geteuid()}),
        startedAt_(clock_.now()) {}

  int run() {
    const Logger log(log_, "CorvaneRootHelper");
    auto listener = HelperListener::open({.loop = loop_.loop(), .main = main_, .log = log_, .clock = clock_},
                                         {.socket = places_.helperSocket(),
                                          .mayAsk = [this](uid_t peer) { return mayAskNow(peer); },
                                          .handler =
                                              [this](HelperRequest request, Completion<std::string> answer) {
                                                service_.handle(std::move(request), std::move(answer));
                                              }});
    if (!listener) {
      log.error(listener.error().text);
      fmt::print(stderr, "CorvaneRootHelper: {}\n", listener.error().text);
      return 1;
    }
    record_.settle();
    stagingRecord_.settle();
    if (auto ready = staged_.settle(); !ready) log.error(fmt::format("Nothing can be staged: {}", ready.error().text));
    clearStaged();
    state_.settle();
    log.info(fmt::format("Version {} serves {} as user {}.", CORVANE_VERSION, options_.root.string(), geteuid()));
    auto heartbeat = std::make_unique<Heartbeat>(places_.helperHeartbeat(), files_, clock_, main_, log_);
    toolKeeper_.start();
    ownWork_.start();
    const auto clearing = main_.every(
        kClearing, [this] { clearStaged(); }, kClearing / 2);
    const auto tidying = main_.every(
        kTidying, [] { malloc_trim(0); }, kTidying / 2);
    Lease limit;
    std::optional<UvEndSignals> signals;
    signals.emplace(loop_.loop(), std::initializer_list<int>{SIGTERM, SIGINT}, [&](int) {
      if (limit.active()) return;
      log.info("Told to end.");
      heartbeat.reset();
      ownWork_.stop();
      toolKeeper_.stop();
      limit = main_.after(kStopLimit, [this, &log] {
        log.warning("The end took too long and was cut short.");
        // What still runs would outlive what it refers to, so nothing is taken down.
        std::_Exit(0);
      });
      service_.stop([this, &listener] { (*listener)->stop([this] { loop_.quit(0); }); });
    });
    const int code = loop_.run();
    limit.release();
    signals.reset();
    listener->reset();
    loop_.turn();
    log.info("Ended.");
    // A scan of a dead network volume cannot be ended, and taking down what it refers to would wait for it.
    if (discoverer_.scanning()) std::_Exit(code);
    return code;
  }

 private:
  // Those that grew old; who stages looks besides for those that a newer version has replaced.
  void clearStaged() {
    staged_.sweep([](const StagedInstaller&) { return true; });
  }

  [[nodiscard]] CorvaneConstants constantsForHome(const std::filesystem::path& home) const {
    return {.root = options_.root, .home = home};
  }

  // Who sits at the machine is looked up only for those who may not ask anyway.
  [[nodiscard]] bool mayAskNow(uid_t peer) const {
    if (mayAsk(peer, geteuid(), std::nullopt)) return true;
    return mayAsk(peer, geteuid(), console_.currentUid());
  }

  // Text and source come from one look at the domains: a managed value of no use must not lend its rights to the
  // user's text.
  [[nodiscard]] EffectiveValue optionsInForce() const {
    const auto managed = domains_.managed();
    const auto user = domains_.user();
    return effectiveSetting(*findSetting("InstallomatorOptions"), {*managed.values, *user.values}, nullptr);
  }

  HelperSetting setting() {
    const auto options = optionsInForce();
    HelperSetting setting{.config = preferences_.loadConfiguration(),
                          .optionsAreManaged = options.source == ValueSource::managed,
                          .constants = constantsFor(options_.root, console_.current()),
                          .savedApps = savedApps_.current()};
    setting.config.installomatorOptions =
        options.value ? options.value->string().value_or("") : CorvaneConfiguration().installomatorOptions;
    log_.refreshVerbosityFromPreferences(setting.config.verboseMode, setting.config.debugMode);
    return setting;
  }

  [[nodiscard]] StatusInfo status() const {
    return {.helperVersion = CORVANE_VERSION,
            .processIdentifier = getpid(),
            .startedAt = startedAt_,
            .installomatorAvailable = files_.exists(places_.installomatorScript())};
  }

  HelperOptions options_;
  ConsoleUserSource console_;
  CorvaneConstants places_;
  SystemClock clock_;
  SystemEntropy entropy_;
  SystemZone zone_;
  PosixFiles files_;
  UvMainLoop loop_;
  MainQueue& main_;
  NotificationCenter notifications_;
  LoggingService log_;
  ConsolePreferenceDomains domains_;
  PreferenceManager preferences_;
  SavedApps savedApps_;
  ReceiptManager receipts_;
  ReceiptsSnapshot histories_;
  HelperStateFile state_;
  LinuxRunningApplications processes_;
  SysPowerSource power_;
  SysNetworkProbe network_;
  UvChildProcesses children_;
  UvWorkQueue work_;
  CurlHttpClient http_;
  VersionChecker versions_;
  AppDiscoverer discoverer_;
  RunRecord record_;
  StagedInstallers staged_;
  RunRecord stagingRecord_;
  LabelFileInstallFacts installFacts_;
  Stager stager_;
  PatchRunner runner_;
  Webhooks webhooks_;
  RunDesk desk_;
  HelperService service_;
  OwnWork ownWork_;
  ToolKeeper toolKeeper_;
  Date startedAt_;
};

// A root that others may change would let them choose what runs here.
Status checkRoot(const std::filesystem::path& root) {
  if (root == "/") return {};
  return checkOwnFolder(root);
}

int serve(int count, char** arguments) {
  if (count == 2 && std::string_view(arguments[1]) == "--help") {
    fmt::print("{}", helperHelp());
    return 0;
  }
  const auto options = HelperOptions::parse(std::span(arguments + 1, static_cast<std::size_t>(count - 1)));
  umask(022);
  auto root = options ? checkRoot(options->root) : Status(std::unexpected(options.error()));
  if (root) root = prepareFolders(constantsFor(options->root, std::nullopt));
  auto console = root ? ConsoleUserSource::create(*options) : Result<ConsoleUserSource>(std::unexpected(root.error()));
  if (!console) {
    fmt::print(stderr, "CorvaneRootHelper: {}\n", console.error().text);
    return options ? 1 : 2;
  }
  clearenv();
  signal(SIGPIPE, SIG_IGN);
  Daemon daemon(*options, std::move(*console));
  return daemon.run();
}

}  // namespace
}  // namespace corvane

int main(int count, char** arguments) {
  corvane::fillStandardDescriptors();
  return corvane::serve(count, arguments);
}
