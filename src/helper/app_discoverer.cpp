#include "helper/app_discoverer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "core/client/helper_messages.h"
#include "core/client/xpc_service_client.h"
#include "core/discovery/app_discovery_service.h"
#include "core/discovery/bundle_inventory.h"
#include "core/discovery/label_catalog.h"
#include "helper/brief_labels.h"

namespace corvane {

struct AppDiscoverer::Scan {
  Result<Apps> apps;
  std::vector<VersionQuestion> questions;
  CheckSetting check;
};

namespace {

VersionQuestion questionFor(const Label& label, const LabelCatalog& catalog) {
  const auto* fragment = catalog.find(label);
  const bool computed = fragment && fragment->isComputed(LabelVariable::appNewVersion);
  return {.label = label,
          .literal = fragment ? fragment->appNewVersion : std::nullopt,
          .namedInMetadata = computed || (fragment && fragment->appNewVersion && !fragment->appNewVersion->empty()),
          .fragment = catalog.file(label).value_or(std::filesystem::path())};
}

std::optional<LabelSet> knownLabels(const std::optional<LabelSet>& asked, const LabelCatalog& catalog,
                                    const Logger& log) {
  if (!asked) return std::nullopt;
  LabelSet known;
  Labels unknown;
  for (const auto& label : *asked) {
    if (catalog.contains(label))
      known.insert(label);
    else
      unknown.push_back(label);
  }
  if (!unknown.empty())
    log.warning(fmt::format("The catalogue does not have {} label(s), left out: {}.", unknown.size(), brief(unknown)));
  return known;
}

}  // namespace

Apps withLatestVersions(Apps apps, const VersionAnswers& answers) {
  for (auto& app : apps) {
    const auto found = answers.find(app.label);
    if (found == answers.end()) continue;
    app.newVersion = found->second.version;
    app.updateCheckFailed = !app.newVersion;
    app.updateCheckFailureReason =
        app.newVersion ? std::nullopt : std::optional<std::string>(found->second.failureReason);
  }
  return apps;
}

AppDiscoverer::AppDiscoverer(Services services)
    : s_(std::move(services)), log_(s_.log, "AppDiscoverer"), memory_(std::make_shared<Memory>(s_.clock, s_.log)) {}

AppDiscoverer::~AppDiscoverer() {
  for (const auto& lane : lanes_) {
    for (const auto& discovery : lane.waiting)
      for (auto& done : discovery->asked) done.abandon();
    if (!lane.scanning) continue;
    for (auto& done : lane.scanning->asked) done.abandon();
  }
}

AppDiscoverer::Scan AppDiscoverer::scan(const HelperSetting& setting, const Order& order, Memory& memory) {
  TroubleLog::Round round(memory.troubles);
  const Logger logger(round, "AppDiscoverer");
  Scan scan{.apps = Apps{},
            .questions = {},
            .check = {.functions = setting.constants.fragmentsPath() / "functions.sh", .askTool = {}}};
  if (setting.config.versionComparisonInstallomatorFallback)
    scan.check.askTool = setting.constants.installomatorScript();
  const auto catalog = memory.catalogs.current(setting.constants.labelsFolder());
  if (!catalog) {
    if (catalog.error().code != ENOENT) scan.apps = std::unexpected(XPCError::discovery(catalog.error().text));
    return scan;
  }
  const auto inventory =
      BundleInventory::scan(setting.constants, AppDiscoveryService::scanRules(setting.config), logger);
  if (!inventory) {
    scan.apps = std::unexpected(XPCError::discovery(inventory.error().text));
    return scan;
  }
  const LabelCatalog& labels = **catalog;
  AppDiscoveryService service(setting.config, order.latest != Latest::no,
                              knownLabels(order.labels, labels, Logger(memory.log, "AppDiscoverer")), setting.constants,
                              round, *setting.savedApps);
  scan.apps = service.discoverApps(labels, *inventory);
  if (!order.labels) round.sawEverything();
  if (order.latest == Latest::no) return scan;
  for (const auto& app : *scan.apps) scan.questions.push_back(questionFor(app.label, labels));
  return scan;
}

void AppDiscoverer::discover(Order order, Completion<Result<Apps>> done) {
  auto& lane = lanes_.at(static_cast<std::size_t>(order.asker));
  const auto same = std::ranges::find_if(lane.waiting, [&](const auto& waiting) { return waiting->order == order; });
  if (same != lane.waiting.end()) return (*same)->asked.push_back(std::move(done));
  const auto& discovery = lane.waiting.emplace_back(std::make_shared<Discovery>());
  discovery->order = std::move(order);
  discovery->asked.push_back(std::move(done));
  discovery->limit = s_.main.after(kDiscoveryTimeLimit, [this, &lane, weak = std::weak_ptr(discovery)] {
    if (const auto late = weak.lock()) giveUp(lane, late);
  });
  scanNext(lane);
}

void AppDiscoverer::scanNext(Lane& lane) {
  if (lane.scanning || lane.waiting.empty()) return;
  lane.scanning = std::move(lane.waiting.front());
  lane.waiting.pop_front();
  runThen(
      s_.work, s_.main,
      [setting = s_.setting(), order = lane.scanning->order, memory = memory_] {
        return scan(setting, order, *memory);
      },
      lifeline_.guard([this, &lane](Scan scan) {
        const auto discovery = std::exchange(lane.scanning, nullptr);
        discovery->limit.release();
        scanNext(lane);
        scanned(discovery, std::move(scan));
      }));
}

void AppDiscoverer::giveUp(Lane& lane, const std::shared_ptr<Discovery>& discovery) {
  std::erase(lane.waiting, discovery);
  const auto text = fmt::format("The folders of labels and applications did not answer in {} minutes",
                                std::chrono::duration_cast<std::chrono::minutes>(kDiscoveryTimeLimit).count());
  log_.error(text + "; a discovery was given up.");
  failLater(*discovery, XPCError::discovery(text));
}

void AppDiscoverer::scanned(const std::shared_ptr<Discovery>& discovery, Scan scan) {
  if (discovery->asked.empty()) return;
  const auto latest = discovery->order.latest;
  if (latest == Latest::no || !scan.apps) return answer(*discovery, scan.apps);
  auto known = latest == Latest::remembered ? takeRemembered(scan.questions) : VersionAnswers{};
  s_.versions.check(std::move(scan.questions), scan.check,
                    lifeline_.guard([this, discovery, apps = std::move(*scan.apps),
                                     known = std::move(known)](VersionAnswers answers) mutable {
                      remember(answers);
                      answers.merge(known);
                      answer(*discovery, withLatestVersions(std::move(apps), answers));
                    }));
}

void AppDiscoverer::answer(Discovery& discovery, const Result<Apps>& apps) {
  for (auto& done : std::exchange(discovery.asked, {})) done(apps);
}

void AppDiscoverer::failLater(Discovery& discovery, const Error& error) {
  discovery.limit.release();
  for (auto& done : std::exchange(discovery.asked, {}))
    s_.main.post([done = std::move(done), error]() mutable { done(std::unexpected(error)); });
}

void AppDiscoverer::stop() {
  for (auto& lane : lanes_) {
    auto cutOff = std::exchange(lane.waiting, {});
    if (lane.scanning) cutOff.push_front(lane.scanning);
    for (auto& discovery : cutOff)
      failLater(*discovery,
                helperError(HelperErrorCode::stopping, "The helper is stopping; the discovery was cut off"));
  }
}

VersionAnswers AppDiscoverer::takeRemembered(std::vector<VersionQuestion>& questions) const {
  VersionAnswers known;
  std::erase_if(questions, [&](const VersionQuestion& question) {
    const auto found = remembered_.find(question.label);
    if (found == remembered_.end() || s_.clock.steadyNow() - found->second.at > kVersionMemory) return false;
    known[question.label] = {.version = found->second.version};
    return true;
  });
  return known;
}

void AppDiscoverer::remember(const VersionAnswers& answers) {
  for (const auto& [label, answer] : answers) {
    if (answer.version)
      remembered_[label] = {.version = *answer.version, .at = s_.clock.steadyNow()};
    else
      remembered_.erase(label);
  }
}

}  // namespace corvane
