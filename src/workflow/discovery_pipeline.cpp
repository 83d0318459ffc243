#include "workflow/discovery_pipeline.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/localized.h"
#include "core/discovery/app_discovery_service.h"
#include "workflow/app_predicates.h"
#include "workflow/discovery_answers.h"
#include "workflow/status_texts.h"

namespace corvane {

DiscoveryPipeline::DiscoveryPipeline(const RoomContext& context, DiscoveryFields& fields)
    : c_(context), fields_(fields) {}

void DiscoveryPipeline::startDiscovery(DiscoveryRequest request) {
  const auto filterCount = request.labelsFilter ? request.labelsFilter->size() : 0;
  c_.log.info(fmt::format("Starting discovery (includeLatestVersions = {}, labelsFilterCount = {})...",
                          request.includeLatestVersions, filterCount));
  fields_.updateCheckCoversAllApps = request.operation == DiscoveryOperation::checkUpdates && filterCount == 0;
  c_.gate.setLoading(true);
  c_.messages.error(std::nullopt);
  c_.gate.setOperation(request.operation);
  const auto generation = ++fields_.discoveryGeneration;
  c_.messages.status(startText(request.operation, filterCount > 0 ? filterCount : c_.fields.inventory.apps.size()));
  const bool includeLatestVersions = request.includeLatestVersions;
  send({.generation = generation, .request = std::move(request)});
  armWatchdog(generation, includeLatestVersions);
}

void DiscoveryPipeline::send(Pass pass) {
  auto& helper = c_.services.helper;
  const bool latest = pass.request.includeLatestVersions;
  const bool filtered = pass.request.labelsFilter.has_value();
  const bool wantsAll = !filtered && pass.request.forceFullDiscovery;
  const auto labels = filtered ? withoutDuplicates(*pass.request.labelsFilter) : labelsOf(c_.fields.inventory.apps);
  if (latest && filtered && labels.empty()) return answerWithCurrentApps(std::move(pass));
  Completion<Result<Apps>> answered = lifeline_.guard(
      [this, pass = std::move(pass)](Result<Apps> answer) mutable { handleAnswer(std::move(pass), std::move(answer)); },
      [log = c_.log] { log.warning("Self is nil in completion handler"); });
  if (!latest)
    helper.discoverInstalledApps(std::move(answered));
  else if (wantsAll || labels.empty())
    helper.discoverAppsWithUpdates(std::move(answered));
  else
    helper.discoverAppsForLabels(labels, true, std::move(answered));
}

void DiscoveryPipeline::answerWithCurrentApps(Pass pass) {
  c_.log.info("labelsFilter is empty; returning current apps without contacting helper.");
  c_.services.main.post(lifeline_.guard([this, pass = std::move(pass), apps = c_.fields.inventory.apps]() mutable {
    handleAnswer(std::move(pass), std::move(apps));
  }));
}

void DiscoveryPipeline::armWatchdog(std::int64_t generation, bool includeLatestVersions) {
  std::erase_if(watchdogs_, [](const auto& watchdog) { return watchdog->fired; });
  auto& watchdog = *watchdogs_.emplace_back(std::make_unique<Watchdog>());
  watchdog.alarm = c_.services.main.after(includeLatestVersions ? kCheckTakesLong : kInventoryTimeout,
                                          [this, &watchdog, generation, includeLatestVersions] {
                                            watchdog.fired = true;
                                            if (includeLatestVersions)
                                              warnSlowCheck();
                                            else
                                              giveUpWaiting(generation);
                                          });
}

// Whichever pass is loading now is the one that is slow, so no generation is compared.
void DiscoveryPipeline::warnSlowCheck() {
  if (!c_.fields.gate.isLoading) return;
  c_.log.warning("Check for Updates is taking longer than expected but is still running");
  if (c_.fields.gate.currentOperation == DiscoveryOperation::checkUpdates)
    c_.messages.status(localized(
        "Check for Updates is taking longer than usual. You can keep this window open while we finish checking."));
}

void DiscoveryPipeline::giveUpWaiting(std::int64_t generation) {
  if (!c_.fields.gate.isLoading || generation != fields_.discoveryGeneration) return;
  c_.log.warning("XPC timeout, falling back to direct discovery (no latest-version checks)");
  c_.messages.status(localized("Scanning apps installed on this Mac..."));
  startDirectDiscovery(++fields_.discoveryGeneration);
}

void DiscoveryPipeline::handleAnswer(Pass pass, Result<Apps> answer) {
  if (pass.generation != fields_.discoveryGeneration) {
    c_.log.info(fmt::format("Discarding discovery result from superseded pass {} (current is {}).", pass.generation,
                            fields_.discoveryGeneration));
    if (pass.request.completion) c_.gate.whenIdle(std::move(pass.request.completion));
    return;
  }
  if (answer)
    succeeded(std::move(pass), *answer);
  else
    failed(std::move(pass), answer.error());
}

void DiscoveryPipeline::succeeded(Pass pass, const Apps& records) {
  c_.log.info(fmt::format("Discovery successful via XPC, found {} apps", records.size()));
  c_.messages.error(std::nullopt);
  const bool latest = pass.request.includeLatestVersions;
  if (latest) fields_.answeredLabels = labelsOf(records);
  const bool emptyDiscovery = records.empty() && !pass.isScoped();
  takeInventory(pass, records);
  if (!emptyDiscovery) c_.gate.setLoading(false);
  const auto before = mark();
  c_.crossings.recomputeCounts(latest ? SideEffects::run : SideEffects::suppressed);
  // What the counts set off keeps the gate: this pass then closes nothing and says nothing.
  const bool takenOver = mark() != before;
  c_.crossings.storeApps();
  recordDates(pass);
  c_.crossings.storeFingerprint();
  if (latest) reportCheck(pass, records);
  if (takenOver) {
    if (fields_.discoveryGeneration == before.generation) c_.gate.setLoading(false);
  } else if (emptyDiscovery) {
    settleEmptyDiscovery();
  } else if (!sideEffectsOwnTheEnding()) {
    close();
    c_.messages.status(latest ? checkCompleteText(c_.fields.inventory)
                              : discoveryCompleteText(c_.fields.inventory.apps.size()));
  }
  finish(std::move(pass), !records.empty(), takenOver);
}

void DiscoveryPipeline::takeInventory(const Pass& pass, const Apps& records) {
  const auto config = c_.services.preferences.loadConfiguration();
  const auto& taken = pass.request.includeLatestVersions ? normalised(records) : records;
  c_.crossings.replaceApps(pass.isScoped()
                               ? AppDiscoveryService::mergingScopedDiscovery(taken, c_.fields.inventory.apps, config)
                               : withoutIgnored(taken, config));
  c_.services.selfUpdateDisplay.lookUp(c_.fields.inventory.apps);
}

void DiscoveryPipeline::recordDates(const Pass& pass) {
  const auto now = c_.services.clock.now();
  if (pass.request.includeLatestVersions) c_.crossings.recordUpdateCheck(now);
  c_.crossings.recordDiscovery(now);
  if (!pass.request.includeLatestVersions || pass.isScoped()) return;
  c_.services.preferences.writePreference(ScheduledDiscoveryPolicy::fullInventoryCheckDateKey, now);
  c_.log.info("Recorded full inventory check as the start of the DiscoveryFrequency interval.");
}

void DiscoveryPipeline::reportCheck(const Pass& pass, const Apps& records) {
  const auto facts = c_.crossings.facts();
  Labels needing;
  for (const auto& app : records)
    if (appNeedsUpdate(app, facts)) needing.push_back(app.label);
  c_.log.info(fmt::format("Check for Updates summary - total apps: {}, apps with updates: {} [{}]", records.size(),
                          needing.size(), joined(needing)));
  if (pass.isScoped()) return;
  c_.services.signals.send(
      {.name = "Updates.checked",
       .parameters = {{"pending", std::string(usageCountBucket(c_.fields.inventory.pendingUpdates))}}});
}

void DiscoveryPipeline::finish(Pass pass, bool foundAny, bool takenOver) {
  const auto& request = pass.request;
  const bool chains = !request.includeLatestVersions && foundAny && !pass.isScoped() &&
                      (request.operation == DiscoveryOperation::initialLoad ||
                       request.operation == DiscoveryOperation::discoverInstalled) &&
                      helperIsReady();
  if (chains && !takenOver) return chainCheck("Discovery complete");
  if (!pass.request.completion) return;
  if (takenOver)
    c_.gate.nowOrWhenIdle(std::move(pass.request.completion));
  else
    pass.request.completion();
}

void DiscoveryPipeline::failed(Pass pass, const Error& error) {
  c_.log.warning(fmt::format("XPC discovery failed: {}", error.text));
  if (XPCError::isDiscoveryFailed(error))
    return failedForGood(std::move(pass), localized("Discovery failed: {}", error.text));
  if (pass.request.includeLatestVersions)
    return failedForGood(
        std::move(pass),
        localized("Check for Updates requires the helper service and it could not be contacted ({}).", error.text));
  c_.log.warning("Falling back to direct discovery (no latest-version checks)");
  c_.messages.status(localized("Having trouble contacting the helper service; scanning apps directly on this Mac..."));
  startDirectDiscovery(++fields_.discoveryGeneration);
}

void DiscoveryPipeline::failedForGood(Pass pass, std::string text) {
  end(std::nullopt, std::move(text));
  const auto before = mark();
  c_.crossings.refreshFailed();
  if (!pass.request.completion) return;
  if (mark() != before)
    c_.gate.nowOrWhenIdle(std::move(pass.request.completion));
  else
    pass.request.completion();
}

void DiscoveryPipeline::startDirectDiscovery(std::int64_t generation) {
  c_.log.info("Starting direct discovery (bypassing XPC, includeLatestVersions = false)...");
  runThen(
      c_.services.work, c_.services.main,
      [scan = AppDiscoveryService(c_.services.preferences.loadConfiguration(), false, std::nullopt, c_.services.places,
                                  c_.services.log, c_.fields.inventory.apps)]() mutable { return scan.discoverApps(); },
      lifeline_.guard([this, generation](Result<Apps> found) {
        if (!found) return directFailed(generation, found.error());
        directSucceeded(generation, *found);
      }));
}

void DiscoveryPipeline::directSucceeded(std::int64_t generation, const Apps& records) {
  if (generation != fields_.discoveryGeneration) {
    c_.log.info(fmt::format("Discarding direct-discovery result from superseded pass {} (current is {}).", generation,
                            fields_.discoveryGeneration));
    return;
  }
  c_.messages.error(std::nullopt);
  c_.crossings.replaceApps(records);
  if (!records.empty()) c_.gate.setLoading(false);
  c_.crossings.recomputeCounts(SideEffects::suppressed);
  c_.crossings.storeApps();
  c_.crossings.recordDiscovery(c_.services.clock.now());
  c_.crossings.storeFingerprint();
  if (records.empty()) return settleEmptyDiscovery();
  if (sideEffectsOwnTheEnding()) return;
  close();
  c_.log.info(fmt::format("Direct discovery successful, found {} apps", records.size()));
  c_.messages.status(discoveryCompleteText(records.size()));
  c_.crossings.refreshHelperState(true);
  if (helperIsReady()) chainCheck("Direct discovery complete");
}

// A stale scan that fails still tells so and empties the inventory, but leaves the newer pass its gate.
void DiscoveryPipeline::directFailed(std::int64_t generation, const Error& error) {
  const auto text = localized("Discovery failed: {}", error.text);
  if (generation == fields_.discoveryGeneration) close();
  c_.log.error(fmt::format("Direct discovery failed: Discovery failed: {}", error.text));
  c_.messages.status(std::nullopt);
  c_.messages.error(text);
  c_.crossings.replaceApps({});
  c_.crossings.refreshFailed();
}

void DiscoveryPipeline::chainCheck(std::string_view reason) {
  c_.log.info(fmt::format("{}; chaining Check for Updates so version state is populated.", reason));
  checkForUpdates();
}

void DiscoveryPipeline::settleEmptyDiscovery() {
  using Availability = AppDiscoveryService::CatalogAvailability;
  const auto config = c_.services.preferences.loadConfiguration();
  const auto summary =
      AppDiscoveryService::summarizeLabelCatalog(config, c_.services.places.fragmentsPath(), c_.services.log);
  const auto message = AppDiscoveryService::emptyDiscoveryStatusMessage(summary, 0);
  if (summary.availability != Availability::ready) return end(std::nullopt, message);
  if (summary.ignoredLabelCount == 0) return end(message, std::nullopt);
  c_.messages.error(std::nullopt);
  c_.gate.setLoading(true);
  if (!c_.fields.gate.currentOperation) c_.gate.setOperation(DiscoveryOperation::discoverInstalled);
  c_.messages.status(localized("Discovering applications..."));
  countExcludedApps(config);
}

void DiscoveryPipeline::countExcludedApps(const CorvaneConfiguration& config) {
  struct Counted {
    std::int64_t count;
    std::string message;
  };
  runThen(
      c_.services.work, c_.services.main,
      [scan = AppDiscoveryService(config, false, std::nullopt, c_.services.places, c_.services.log), config,
       fragments = c_.services.places.fragmentsPath(), &log = c_.services.log]() mutable {
        const auto count = scan.countInstalledAppsMatchingIgnoredLabels();
        const auto summary = AppDiscoveryService::summarizeLabelCatalog(config, fragments, log);
        return Counted{.count = count, .message = AppDiscoveryService::emptyDiscoveryStatusMessage(summary, count)};
      },
      lifeline_.guard([this, generation = fields_.discoveryGeneration](const Counted& counted) {
        if (generation != fields_.discoveryGeneration) return;
        // An inventory of the helper's own schedule may have come meanwhile; then there is nothing to explain.
        if (!c_.fields.inventory.apps.empty()) return end(std::nullopt, std::nullopt);
        end(counted.message, std::nullopt);
        c_.log.info(
            fmt::format("Empty discovery finished — {} installed app(s) with matching labels excluded by "
                        "administrator policy.",
                        counted.count));
      }));
}

void DiscoveryPipeline::close() {
  c_.gate.setLoading(false);
  c_.gate.setOperation(std::nullopt);
}

void DiscoveryPipeline::end(std::optional<std::string> status, std::optional<std::string> error) {
  close();
  c_.messages.status(std::move(status));
  c_.messages.error(std::move(error));
}

bool DiscoveryPipeline::sideEffectsOwnTheEnding() const {
  const auto& effects = c_.fields.sideEffects;
  return effects.openAppsNotifyStageLabels || effects.openAppsNotificationGate != OpenAppsNotificationGate::idle;
}

bool DiscoveryPipeline::helperIsReady() const {
  return c_.fields.helper.helperOperational && c_.fields.helper.installomatorAvailable;
}

Apps DiscoveryPipeline::withoutIgnored(const Apps& records, const CorvaneConfiguration& config) const {
  auto kept = AppDiscoveryService::droppingIgnoredApps(records, config);
  if (kept.size() != records.size())
    c_.log.info(fmt::format("Dropped {} from the discovery result because the current settings exclude it.",
                            joined(labelsMissingFrom(kept, records))));
  return kept;
}

}  // namespace corvane
