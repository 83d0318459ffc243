#include "helper/own_work.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "core/policies/mac_app_store_update_policy.h"
#include "core/policies/network_readiness_checker.h"
#include "core/policies/patching_cadence_manager.h"

namespace corvane {

struct OwnWork::Pass {
  std::string runID;
  Labels labels;
  Labels stageBehind;  // pending, but open
  Date startedAt;
};

OwnWork::OwnWork(Services services)
    : s_(std::move(services)), pass_(s_.log, "BackgroundPatch"), discovery_(s_.log, "ScheduledDiscovery") {}

void OwnWork::start() {
  const auto config = s_.setting().config;
  noDiscoveryBefore_ = s_.clock.steadyNow() + firstDiscoveryDelay(config, s_.firstWork, s_.entropy);
  arm(config);
  firstLook_ = s_.main.after(s_.firstWork, [this] { look(); });
  looks_ = s_.main.every(
      kOwnWorkLook, [this] { look(); }, kOwnWorkLeeway);
}

void OwnWork::stop() {
  firstLook_.release();
  looks_.release();
  working_ = true;
}

void OwnWork::arm(const CorvaneConfiguration& config) {
  const auto plan = passPlan(config);
  const auto now = s_.clock.now();
  if (plan == plan_) {
    if (nextPass_) nextPass_ = withinReach(*nextPass_, *plan_, now);
    return;
  }
  plan_ = plan;
  nextPass_.reset();
  if (!plan) return pass_.info("Not scheduled: disabled in the configuration, or the application's.");
  const auto delay = firstPassDelay(*plan, s_.state.lastPassConcludedAt(), now, s_.firstWork, s_.entropy);
  nextPass_ = now + delay;
  pass_.info(fmt::format("Started — interval={}s, firstFire={}s, requireAC={}", plan->interval.count(), delay.count(),
                         config.backgroundPatchClosedAppsRequireOnAC));
}

bool OwnWork::discoveryWanted(const CorvaneConfiguration& config) const {
  const auto& own = s_.state.state().lastScheduledDiscoverySummary;
  return s_.clock.steadyNow() >= noDiscoveryBefore_ &&
         isDiscoveryDue(config.discoveryFrequency,
                        s_.preferences.readOptional<Date>(ScheduledDiscoveryPolicy::fullInventoryCheckDateKey),
                        own ? std::optional(own->completedAt) : std::nullopt, s_.clock.now());
}

bool OwnWork::mayPass(const HelperSetting& setting) const {
  const auto& config = setting.config;
  const auto cycle = s_.preferences.readPatchingCadenceState();
  const bool complete =
      cycle.currentPatchingStartDate &&
      PatchingCadenceManager(config, s_.calendar()).isPatchingCompleteForCurrentCycle(cycle, s_.clock.now());
  const auto reason = passObjection(
      config,
      {.toolReady = s_.toolReady().has_value(), .cycleComplete = complete, .onACPower = s_.power.isOnACPower()});
  if (reason) pass_.info(fmt::format("Tick skipped — {}.", *reason));
  return !reason;
}

void OwnWork::look() {
  const auto setting = s_.setting();
  arm(setting.config);
  if (working_) return;
  const bool passIsDue = nextPass_ && s_.clock.now() >= *nextPass_;
  if (passIsDue) nextPass_ = s_.clock.now() + plan_->interval;
  const bool pass = passIsDue && mayPass(setting);
  const bool discovery = discoveryWanted(setting.config) && s_.files.exists(setting.constants.labelsFolder());
  if (pass || discovery) begin(pass, discovery);
}

void OwnWork::begin(bool pass, bool discovery) {
  working_ = true;
  if (discovery) noDiscoveryBefore_ = s_.clock.steadyNow() + kDiscoveryRetry;
  NetworkReadinessChecker::isInternetAvailable(s_.network, lifeline_.guard([this, pass, discovery](bool available) {
    if (available) return check(pass, discovery);
    (pass ? pass_ : discovery_).info("No internet / captive portal detected — skipping network phases this tick.");
    working_ = false;
  }));
}

void OwnWork::check(bool pass, bool discovery) {
  s_.discoverer.discover(
      {.latest = AppDiscoverer::Latest::fresh, .asker = AppDiscoverer::Asker::helper},
      lifeline_.guard([this, pass, discovery](const Result<Apps>& apps) { checked(pass, discovery, apps); }));
}

void OwnWork::checked(bool wantsPass, bool discovery, const Result<Apps>& apps) {
  working_ = false;
  if (!looks_.active()) return;
  if (!apps) return (wantsPass ? pass_ : discovery_).error(fmt::format("The check failed: {}", apps.error().text));
  const auto setting = s_.setting();
  if (discovery) publish(*apps, setting.config);
  if (wantsPass) pass(*apps, setting);
}

void OwnWork::publish(const Apps& apps, const CorvaneConfiguration& config) {
  const auto known = facts(apps, config);
  const ScheduledDiscoverySummary summary{.runID = s_.entropy.uuid().text(),
                                          .completedAt = s_.clock.now(),
                                          .appCount = static_cast<std::int64_t>(apps.size()),
                                          .pendingUpdateCount = std::ranges::count_if(apps, [&](const AppInfo& app) {
                                            return isPending(app, known) && !isHeld(app, known);
                                          })};
  if (auto written = s_.state.discoveryEnded(summary, apps); !written)
    return discovery_.error(fmt::format("The inventory cannot be written: {}", written.error().text));
  discovery_.info(fmt::format("Finished {}: {} app(s), {} with updates.", summary.runID, summary.appCount,
                              summary.pendingUpdateCount));
}

PassFacts OwnWork::facts(const Apps& apps, const CorvaneConfiguration& config) const {
  const auto histories = s_.histories.histories();
  PassFacts facts{.config = config,
                  .cycleStart = s_.preferences.readPatchingCadenceState().currentPatchingStartDate,
                  .failures = histories->failures,
                  .installs = histories->installs,
                  .storeCopies = {},
                  .running = {}};
  for (const auto& app : apps)
    if (MacAppStoreUpdatePolicy::hasMacAppStoreReceipt(app.appPath, s_.files)) facts.storeCopies.insert(app.label);
  return facts;
}

std::optional<RunningBundles> OwnWork::running(const Apps& apps) const {
  auto running = RunningBundles::of(s_.processes);
  if (!running) return std::nullopt;
  // The system names executables by their real places, the inventory as they were found.
  for (const auto& app : apps) {
    std::error_code error;
    if (!app.appPath) continue;
    const auto real = std::filesystem::canonical(*app.appPath, error);
    if (!error && running->paths.contains(real.native())) running->paths.insert(*app.appPath);
  }
  return running;
}

void OwnWork::pass(const Apps& apps, const HelperSetting& setting) {
  // A check takes a minute or more; who pulled the plug or switched the pass off meanwhile is heeded.
  if (!mayPass(setting)) return;
  auto open = running(apps);
  if (!open)
    return pass_.error(
        "Could not enumerate running processes — skipping this pass rather than treating every app as closed.");
  auto known = facts(apps, setting.config);
  known.running = std::move(*open);
  const auto decision = decidePass(apps, known);
  for (const auto& note : decision.notes) pass_.info(note);
  if (!decision.install.empty()) {
    const auto first = std::ranges::find(apps, decision.install.front(), &AppInfo::label);
    return startRun(decision, *first);
  }
  pass_.info("No closed apps require updates this tick.");
  s_.state.passConcluded(s_.clock.now());
  stage(decision.stage);
}

void OwnWork::stage(const Labels& labels) {
  if (!labels.empty()) s_.desk.askOwn({.order = {}, .alsoStageLabels = labels}, [](const RunReport&) {});
}

std::optional<std::string> OwnWork::objection(const AppInfo& app) const {
  const auto config = s_.setting().config;
  const auto reason = passObjection(config, {.toolReady = true, .onACPower = s_.power.isOnACPower()});
  if (reason) return fmt::format("left out: {}", *reason);
  const auto open = running({app});
  if (!open) return "left out: the running processes cannot be listed";
  const auto busy = open->objection(app);
  return busy ? std::optional(fmt::format("left out: {}", busy->text)) : std::nullopt;
}

void OwnWork::startRun(const PassDecision& decision, const AppInfo& first) {
  pass_.info(fmt::format("Patching {} closed app(s): {}", decision.install.size(), joined(decision.install)));
  working_ = true;
  auto pass = std::make_shared<Pass>(
      Pass{.runID = s_.entropy.uuid().text(), .labels = decision.install, .stageBehind = {}, .startedAt = {}});
  // What is open is downloaded behind the run, so that whoever waits for it does not wait for that too.
  Labels stageFirst;
  for (const auto& label : decision.stage) {
    const bool installs = std::ranges::find(decision.install, label) != decision.install.end();
    (installs ? stageFirst : pass->stageBehind).push_back(label);
  }
  RunDesk::OwnRun run{
      .order = {
          .labels = decision.install,
          .attendance = Attendance::unattended,
          .objection = [this](const AppInfo& app) { return objection(app); },
          .comesTo = [this, pass](std::size_t done, const std::optional<AppInfo>& app) { comesTo(*pass, done, app); }},
      .alsoStageLabels = std::move(stageFirst),
      .begins = [this, pass, first] {
        pass->startedAt = s_.clock.now();
        comesTo(*pass, 0, first);
      }};
  s_.desk.askOwn(std::move(run), lifeline_.guard([this, pass](const RunReport& report) { runEnded(*pass, report); }));
}

void OwnWork::comesTo(const Pass& pass, std::size_t done, const std::optional<AppInfo>& app) {
  HelperBackgroundCurrentRun run{.runID = pass.runID,
                                 .startedAt = pass.startedAt,
                                 .totalLabels = static_cast<std::int64_t>(pass.labels.size()),
                                 .completedCount = static_cast<std::int64_t>(done),
                                 .currentLabel = pass.labels.at(done).text};
  if (app) run.currentLabelDisplayName = app->displayName();
  s_.state.passGoesOn(std::move(run));
}

void OwnWork::runEnded(const Pass& pass, const RunReport& report) {
  if (report.error && isHelperError(*report.error, HelperErrorCode::stopping)) return s_.state.passCutOff();
  working_ = false;
  stage(pass.stageBehind);
  const auto failed =
      static_cast<std::size_t>(std::ranges::count(report.outcomes, PatchingStatus::failure, &PatchOutcome::status));
  const auto notReached = report.error ? pass.labels.size() - report.outcomes.size() : 0;
  s_.state.passEnded({.runID = pass.runID,
                      .completedAt = s_.clock.now(),
                      .labels = pass.labels,
                      .totalLabels = static_cast<std::int64_t>(pass.labels.size()),
                      .patchedCount = std::ranges::count_if(report.outcomes, &PatchOutcome::installed),
                      .failureCount = static_cast<std::int64_t>(failed + notReached),
                      .hasFailures = failed + notReached > 0 || report.error.has_value()});
}

}  // namespace corvane
