#include "background/background_patch_scheduler.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "background/background_notices.h"
#include "background/first_delay.h"
#include "background/notification_authorization.h"
#include "core/policies/network_readiness_checker.h"
#include "core/policies/startup_jitter.h"
#include "core/records/notifications.h"

namespace corvane {
namespace {

std::chrono::seconds intervalOf(const CorvaneConfiguration& config) {
  return std::chrono::hours(config.backgroundPatchClosedAppsIntervalHours);
}

}  // namespace

BackgroundPatchScheduler::BackgroundPatchScheduler(StatusViewModel& model, const BackgroundServices& services)
    : model_(model),
      services_(services),
      log_(services.workflow.log, "BackgroundPatchScheduler"),
      timer_(services.workflow.main),
      atLogin_(model, services, log_, [this] { patchClosedApps([](ClosedAppsOutcome) {}); }) {}

void BackgroundPatchScheduler::start() {
  timer_.stop();
  auto& world = services_.workflow;
  if (!requests_.active())
    requests_ = world.notifications.observe<CorvaneClosedAppsPatchRequested>([this](const auto&) {
      services_.workflow.main.post(lifeline_.guard([this] { patchClosedApps([](ClosedAppsOutcome) {}); }));
    });
  const auto config = world.preferences.loadConfiguration();
  if (!config->backgroundPatchClosedAppsEnabled) return log_.info("Disabled in configuration; not scheduling.");
  if (config->backgroundPatchClosedAppsScheduler != BackgroundPatchSchedulerMode::inApp)
    return log_.info(fmt::format("Scheduler mode is {}; skipping in-app timer.",
                                 rawName(config->backgroundPatchClosedAppsScheduler)));
  const auto interval = std::max(intervalOf(*config), kLeastInterval);
  const auto first = firstFire(*config, interval);
  timer_.start({.first = first, .interval = interval, .leeway = kTickLeeway}, [this] { tick(); });
  log_.info(fmt::format("Started — interval={}h, firstFire={}s, requireAC={}, atLogin={}",
                        std::chrono::duration_cast<std::chrono::hours>(interval).count(), first.count(),
                        config->backgroundPatchClosedAppsRequireOnAC, config->backgroundPatchAtLogin));
  atLogin_.schedule(*config);
  if (config->backgroundPatchClosedAppsNotifyOnCompletion) authorizeNotifications(services_.center, log_);
}

// The jitter spreads a fleet: what is left of the interval does not count against it.
std::chrono::seconds BackgroundPatchScheduler::firstFire(const CorvaneConfiguration& config,
                                                         std::chrono::seconds interval) {
  auto& world = services_.workflow;
  const auto jitterMinutes = config.backgroundPatchStartupJitterMaxMinutes;
  if (jitterMinutes > 0) {
    const auto delay = resolvedStartupJitterDelay(jitterMinutes, kLeastFirstDelay, world.entropy);
    log_.info(fmt::format("Fleet startup jitter enabled (max {}m); resolved first-fire delay={}s.", jitterMinutes,
                          delay.count()));
    return std::max(delay, kLeastFirstDelay);
  }
  return firstDelay(world.preferences.readLastBackgroundPatchDate(), world.clock.now(), interval);
}

void BackgroundPatchScheduler::tick() {
  auto& world = services_.workflow;
  const auto config = world.preferences.loadConfiguration();
  if (!patchesClosedAppsInApp(*config)) {
    log_.info("Tick skipped — feature disabled or mode changed.");
    return timer_.stop();
  }
  if (isBusy()) return;
  model_.refreshHelperState(true);
  const auto& fields = model_.fields();
  if (!fields.helper.helperOperational) return log_.info("Tick skipped — helper not operational.");
  if (!fields.helper.installomatorAvailable) return log_.info("Tick skipped — Installomator not present.");
  if (fields.inventory.cycleCompletionMessage) return log_.info("Tick skipped — patching is complete for this cycle.");
  if (config->backgroundPatchClosedAppsRequireOnAC && !world.power.isOnACPower())
    return log_.info("Tick skipped — on battery and require-AC is enabled.");
  const auto checked = fields.inventory.lastUpdateCheckDate;
  if (!checked || world.clock.now() - *checked > intervalOf(*config)) return renewStaleData();
  runClosedAppPass(*config, [](ClosedAppsOutcome) {});
}

bool BackgroundPatchScheduler::isBusy() const {
  if (model_.isIdle()) return false;
  const auto& gate = model_.fields().gate;
  log_.info(
      fmt::format("Tick skipped — dashboard is busy (isPatching={}, isLoading={}).", gate.isPatching, gate.isLoading));
  return true;
}

void BackgroundPatchScheduler::renewStaleData() {
  NetworkReadinessChecker::isInternetAvailable(services_.network, lifeline_.guard([this](bool available) {
    if (!available) return log_.info("No internet / captive portal detected — skipping network phases this tick.");
    if (isBusy()) return;  // the answer took its time
    log_.info("Update data is stale; running Check for Updates this tick.");
    model_.checkForUpdates();
  }));
}

bool BackgroundPatchScheduler::helperPassIsActive() const {
  const auto state = services_.helperState.read();
  return state && state->isBackgroundPassActive(services_.workflow.clock.now(), kHelperPassStale);
}

void BackgroundPatchScheduler::patchClosedApps(Completion<ClosedAppsOutcome> done) {
  auto& world = services_.workflow;
  const auto config = world.preferences.loadConfiguration();
  const auto& fields = model_.fields();
  if (!config->backgroundPatchClosedAppsEnabled) return done(ClosedAppsOutcome::notRun);
  if (fields.inventory.cycleCompletionMessage) {
    log_.info("Closed-app pass skipped — patching is complete for this cycle.");
    return done(ClosedAppsOutcome::notRun);
  }
  if (!model_.isIdle()) return done(ClosedAppsOutcome::notRun);
  if (helperPassIsActive()) {
    log_.info("Closed-app pass skipped — the helper's background pass is running and will handle closed apps.");
    return done(ClosedAppsOutcome::helperPassRunning);
  }
  const bool hasPower = !config->backgroundPatchClosedAppsRequireOnAC || world.power.isOnACPower();
  if (!fields.helper.helperOperational || !fields.helper.installomatorAvailable || !hasPower)
    return done(ClosedAppsOutcome::notRun);
  log_.info("Update check left closed apps pending — running a closed-app pass now.");
  runClosedAppPass(*config, std::move(done));
}

void BackgroundPatchScheduler::runClosedAppPass(const CorvaneConfiguration& config,
                                                Completion<ClosedAppsOutcome> done) {
  auto& world = services_.workflow;
  const auto running = RunningBundles::of(world.processes);
  if (!running) {
    log_.error("Could not enumerate running processes — skipping this pass rather than treating every app as closed.");
    return done(ClosedAppsOutcome::notRun);
  }
  log_.verbose(fmt::format("Filter snapshot — {} running app bundle path(s), {} running bundle ID(s).",
                           running->paths.size(), running->identifiers.size()));
  const auto closed = certifyClosedApps(model_.fields().inventory.apps, model_.facts(), *running);
  for (const auto& remark : closed.remarks) remark.isWarning ? log_.warning(remark.text) : log_.info(remark.text);
  if (closed.labels.empty()) {
    log_.info("No closed apps require updates this tick.");
    if (config.workflowStageUpdates && !closed.pending.empty()) model_.stageDetectedUpdates(closed.pending);
    world.preferences.writeLastBackgroundPatchDate(world.clock.now());
    return done(ClosedAppsOutcome::notRun);
  }
  installClosedApps(closed, config, std::move(done));
}

void BackgroundPatchScheduler::installClosedApps(const ClosedApps& closed, const CorvaneConfiguration& config,
                                                 Completion<ClosedAppsOutcome> done) {
  log_.info(fmt::format("Patching {} closed app(s): {}", closed.labels.size(), joined(closed.labels)));
  if (config.backgroundPatchClosedAppsNotifyOnCompletion)
    tell(passStartedNotice(closed.names, services_.workflow.entropy.uuid().text()), "starting");
  asked_ = std::move(done);
  model_.startBackgroundPatch(closed.labels, config.workflowStageUpdates ? closed.pending : Labels(),
                              lifeline_.guard([this](bool success, const std::string& message, std::int64_t installed) {
                                passEnded(success, message, installed);
                                asked_(success ? ClosedAppsOutcome::succeeded : ClosedAppsOutcome::failed);
                              }));
}

void BackgroundPatchScheduler::passEnded(bool success, const std::string& problem, std::int64_t installed) {
  auto& world = services_.workflow;
  world.preferences.writeLastBackgroundPatchDate(world.clock.now());
  if (!world.preferences.loadConfiguration()->backgroundPatchClosedAppsNotifyOnCompletion) return;
  if (const auto notice = passEndedNotice(success, problem, installed, world.entropy.uuid().text()))
    return tell(*notice, "completion");
  log_.info("Pass finished with nothing installed; skipping the completion notification.");
}

void BackgroundPatchScheduler::tell(const NotificationContent& notice, std::string_view what) {
  services_.router.post(notice, *services_.workflow.preferences.loadConfiguration(),
                        warningOnFailure(log_, fmt::format("Failed to deliver {} notification", what)));
}

}  // namespace corvane
