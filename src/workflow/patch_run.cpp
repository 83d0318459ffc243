#include "workflow/patch_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <iterator>

#include "base/localized.h"
#include "workflow/app_predicates.h"
#include "workflow/patch_messages.h"
#include "workflow/status_texts.h"

namespace corvane {

namespace {

void answer(PatchCompletion& completion, bool success, const std::string& message, std::int64_t installed) {
  if (completion) completion(success, message, installed);
}

}  // namespace

PatchRun::PatchRun(const RoomContext& context, PatchFields& fields) : c_(context), fields_(fields) {}

void PatchRun::startBackgroundPatch(const Labels& labels, const Labels& alsoStageLabels, PatchCompletion completion) {
  if (labels.empty()) return answer(completion, true, "", 0);
  if (c_.gate.busy()) {
    c_.log.info("Skipping background patch — another operation is already running");
    return answer(completion, false, "Another operation is already running", 0);
  }
  startPatching(labels, DiscoveryOperation::patchBackground, alsoStageLabels, std::move(completion));
}

void PatchRun::updateApp(const AppInfo& app) {
  if (c_.gate.busy())
    return c_.log.info(fmt::format("Ignoring Update for {} — another operation is running.", app.label.text));
  if (app.updateCheckFailed || !appNeedsUpdate(app, c_.crossings.facts()))
    return c_.log.info(fmt::format("Ignoring Update request for app without a known update: {}", app.label.text));
  startPatching({app.label}, DiscoveryOperation::patchSingle, {}, nullptr);
}

void PatchRun::startPatching(const Labels& labels, DiscoveryOperation operation, const Labels& alsoStageLabels,
                             PatchCompletion completion) {
  c_.log.info(fmt::format("Starting patch for {} app(s) (operation: {})", labels.size(), rawName(operation)));
  c_.crossings.recordDeferralEvents(labels, DeferralEventType::installationStarted, std::nullopt, std::nullopt);
  c_.gate.ownRunStarted();
  c_.gate.setPatching(true);
  c_.gate.setHelperPassOwnsPatchingState(false);
  c_.gate.setOperation(operation);
  fields_.progress = PatchProgress{.operation = operation,
                                   .labels = labels,
                                   .currentLabel = labels.empty() ? std::nullopt : std::optional(labels.front()),
                                   .done = 0,
                                   .total = static_cast<std::int64_t>(labels.size())};
  const auto* first = labels.empty() ? nullptr : appWith(c_.fields.inventory.apps, labels.front());
  auto name = first != nullptr ? first->displayName() : std::string();
  if (name.empty()) name = localized("application");
  c_.crossings.startBlockingPromptWatch(name);
  c_.messages.status(startOfRunText(operation, name, labels.size()));
  c_.messages.error(std::nullopt);
  poll_ = c_.services.main.every(kPollInterval, [this] { poll(); });
  c_.services.helper.startPatching(labels, alsoStageLabels,
                                   lifeline_.guard([this, run = Run{.operation = operation,
                                                                    .labels = labels,
                                                                    .startedAt = c_.services.clock.now(),
                                                                    .completion = std::move(completion)}](
                                                       const Result<PatchRunAnswer>& answered) mutable {
                                     applyPatchResult(std::move(run), answered);
                                   }));
}

void PatchRun::poll() {
  if (!c_.fields.gate.isPatching) return poll_.release();
  c_.services.helper.getPatchingProgress(
      lifeline_.guard([this](const PatchProgressInfo& info) { showProgress(info); }));
}

void PatchRun::showProgress(const PatchProgressInfo& info) {
  if (!c_.fields.gate.isPatching || !info.isActive) return;
  const Label current(info.currentLabel);
  const auto* app = appWith(c_.fields.inventory.apps, current);
  const auto name = current.empty() ? localized("application") : (app != nullptr ? app->displayName() : current.text);
  if (info.totalLabels < 1) return;
  if (fields_.progress) {
    fields_.progress->currentLabel = current.empty() ? std::nullopt : std::optional(current);
    fields_.progress->done = info.completedCount;
    fields_.progress->total = info.totalLabels;
    c_.crossings.fieldsChanged();
  }
  if (c_.fields.blockingPrompt.blockingPromptAppName) {
    c_.crossings.renameBlockingPrompt(name);
    return c_.messages.status(waitingForQuitText(name));
  }
  c_.messages.status(patchProgressText(c_.fields.gate.currentOperation.value_or(DiscoveryOperation::patchAll), name,
                                       info.completedCount + 1, info.totalLabels));
}

void PatchRun::applyPatchResult(Run run, const Result<PatchRunAnswer>& answered) {
  c_.gate.ownRunAnswered();
  fields_.progress.reset();
  poll_.release();
  c_.gate.setPatching(false);
  c_.crossings.stopBlockingPromptWatch();
  c_.gate.setOperation(std::nullopt);
  c_.crossings.invalidateReceiptCaches();
  if (!answered) return startFailed(std::move(run), answered.error());
  if (answered->installedCount > 0)
    c_.services.signals.send({.name = run.operation == DiscoveryOperation::patchBackground
                                          ? "Corvane.Patching.Background.completed"
                                          : "Corvane.Patching.completed",
                              .floatValue = static_cast<double>(answered->installedCount)});
  if (answered->success)
    finishedWell(std::move(run), *answered);
  else
    finishedWithErrors(std::move(run), *answered);
}

void PatchRun::startFailed(Run run, const Error& error) {
  const auto text = localized("Failed to start patching: {}", error.text);
  followUpError(run, text, text);
  settle(run, false, text, 0);
}

void PatchRun::finishedWithErrors(Run run, const PatchRunAnswer& result) {
  followUpError(run, result.message, withDisplayNames(result.message, c_.fields.inventory.apps));
  sendFinished(run, "failure");
  settle(run, false, result.message, result.installedCount);
}

// What follows on an error may recompute the counts, and these may set off work that now holds the gate.
void PatchRun::followUpError(const Run& run, const std::string& message, const std::string& shown) {
  c_.messages.error(shown);
  const auto generation = c_.fields.discovery.discoveryGeneration;
  const auto runs = c_.gate.ownRunsStarted();
  c_.crossings.patchErrorFollowUp(run.operation, run.labels, message);
  recheck(run.labels, generation != c_.fields.discovery.discoveryGeneration || runs != c_.gate.ownRunsStarted());
  // The start of the recheck cleared it; nobody would ever read why the run failed.
  c_.messages.error(shown);
}

void PatchRun::recheck(const Labels& labels, bool takenOver) {
  if (!takenOver) return c_.crossings.checkForUpdates(labels);
  c_.gate.nowOrWhenIdle([this, labels] { c_.crossings.checkForUpdates(labels); });
}

void PatchRun::finishedWell(Run run, const PatchRunAnswer& result) {
  const auto facts = c_.crossings.facts();
  const bool othersPending = std::ranges::any_of(c_.fields.inventory.apps, [&](const AppInfo& app) {
    return std::ranges::find(run.labels, app.label) == run.labels.end() && isPending(app, facts);
  });
  if (othersPending)
    c_.log.info(
        fmt::format("Patched {} label(s), but other apps still have updates pending — leaving the deferral "
                    "cycle and any active deadline in place.",
                    run.labels.size()));
  const auto putOff = putOffBy(run, facts);
  if (!putOff.empty())
    c_.crossings.updatesPutOff(run.operation, putOff);
  else if (!othersPending)
    c_.crossings.completePatchingCycle();
  c_.messages.status(localized("Update complete. {} Refreshing…", result.message));
  sendFinished(run, "success");
  recheck(run.labels, false);
  settle(run, true, result.message, result.installedCount);
}

Labels PatchRun::putOffBy(const Run& run, const AppFacts& facts) const {
  Labels putOff;
  if (!facts.latestReceipts) return putOff;
  // Receipts hold whole seconds.
  const auto since = std::chrono::floor<std::chrono::seconds>(run.startedAt);
  std::ranges::copy_if(run.labels, std::back_inserter(putOff), [&](const Label& label) {
    const auto receipt = facts.latestReceipts->find(label);
    return receipt != facts.latestReceipts->end() && receipt->second.status == PatchingStatus::skipped &&
           receipt->second.timestamp >= since;
  });
  return putOff;
}

void PatchRun::settle(Run& run, bool success, const std::string& message, std::int64_t installed) {
  fields_.lastEnd = PatchEnd{.labels = run.labels, .success = success, .message = message, .installedCount = installed};
  c_.crossings.fieldsChanged();
  answer(run.completion, success, message, installed);
}

void PatchRun::sendFinished(const Run& run, const char* outcome) {
  c_.services.signals.send(
      {.name = "Patch.finished",
       .parameters = {{"operation", std::string(rawName(run.operation))},
                      {"outcome", outcome},
                      {"labels", std::string(usageCountBucket(static_cast<std::int64_t>(run.labels.size())))}}});
}

}  // namespace corvane
