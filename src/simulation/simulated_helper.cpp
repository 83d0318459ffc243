#include "simulation/simulated_helper.h"

#include <algorithm>
#include <utility>

namespace corvane {

namespace {

constexpr std::int64_t kFailedExit = 2;

Error outOfReach() {
  return {.domain = XPCError::domain, .code = XPCError::discoveryFailed + 1, .text = "The helper is out of reach."};
}

}  // namespace

SimulatedHelper::~SimulatedHelper() {
  const auto abandon = [](auto& queue) {
    for (auto& waiting : queue) waiting.done.abandon();
  };
  abandon(statuses_);
  abandon(checks_);
  abandon(runs_);
  abandon(polls_);
}

template <class Answer>
void SimulatedHelper::answerAfter(Queue<Answer>& queue, Duration delay, Completion<Answer> done,
                                  std::function<Answer()> make) {
  const auto place = queue.insert(queue.end(), {.done = std::move(done), .alarm = {}});
  place->alarm = main_.after(delay, [&queue, place, make = std::move(make)] {
    auto answered = std::move(*place);
    queue.erase(place);
    answered.done(make());
  });
}

Apps SimulatedHelper::check(const Labels& labels, bool latestVersions) const {
  Apps records;
  for (const auto& app : apps) {
    if (!labels.empty() && std::ranges::find(labels, app.label, &Label::text) == labels.end()) continue;
    AppInfo record;
    record.label = Label(app.label);
    record.name = app.label;
    record.currentVersion = app.installed;
    if (latestVersions) {
      record.updateCheckFailed = behaviour.failingChecks.contains(app.label);
      if (!record.updateCheckFailed) record.newVersion = app.latest;
    }
    records.push_back(std::move(record));
  }
  return records;
}

void SimulatedHelper::getStatus(Completion<Result<StatusInfo>> done) {
  answerAfter<Result<StatusInfo>>(statuses_, Duration::zero(), std::move(done), [this]() -> Result<StatusInfo> {
    if (behaviour.outOfReach) return std::unexpected(outOfReach());
    return StatusInfo{.helperVersion = "1.0", .startedAt = clock_.now(), .installomatorAvailable = true};
  });
}

void SimulatedHelper::discover(Labels labels, bool latestVersions, Completion<Result<Apps>> done) {
  answerAfter<Result<Apps>>(checks_, behaviour.checkTakes, std::move(done),
                            [this, labels = std::move(labels), latestVersions]() -> Result<Apps> {
                              if (behaviour.outOfReach) return std::unexpected(outOfReach());
                              return check(labels, latestVersions);
                            });
}

void SimulatedHelper::discoverInstalledApps(Completion<Result<Apps>> done) { discover({}, false, std::move(done)); }

void SimulatedHelper::discoverAppsWithUpdates(Completion<Result<Apps>> done) { discover({}, true, std::move(done)); }

void SimulatedHelper::discoverAppsForLabels(const Labels& labels, bool latestVersions, Completion<Result<Apps>> done) {
  discover(labels, latestVersions, std::move(done));
}

void SimulatedHelper::startPatching(const Labels& labels, const Labels&, Completion<Result<PatchRunAnswer>> done) {
  const bool refused = behaviour.busy || behaviour.outOfReach;
  if (labels.empty())  // downloads only, which take no time here and never stand beside a run
    return answerAfter<Result<PatchRunAnswer>>(runs_, Duration::zero(), std::move(done),
                                               [this, refused]() -> Result<PatchRunAnswer> {
                                                 if (refused) return refusal();
                                                 return patchRunAnswer(0, 0, {}, {});
                                               });
  if (onRun) onRun(labels, runsOut_);
  ++runsOut_;
  const auto takes = refused ? Duration::zero() : behaviour.installTakes * static_cast<int>(labels.size());
  answerAfter<Result<PatchRunAnswer>>(runs_, takes, std::move(done),
                                      [this, labels, refused]() -> Result<PatchRunAnswer> {
                                        --runsOut_;
                                        if (!refused) return install(labels);
                                        if (onRunEnded) onRunEnded({}, labels);
                                        return refusal();
                                      });
}

std::unexpected<Error> SimulatedHelper::refusal() const {
  if (behaviour.outOfReach) return std::unexpected(outOfReach());
  return failure(XPCError::domain, XPCError::discoveryFailed + 1, "The helper is busy.");
}

PatchRunAnswer SimulatedHelper::install(const Labels& labels) {
  Labels installed;
  Labels failed;
  for (const auto& label : labels) {
    const auto app = std::ranges::find(apps, label.text, &SimulatedApp::label);
    if (app == apps.end()) continue;
    const bool fails = behaviour.failingInstalls.contains(label.text);
    if (!fails) app->installed = app->latest;
    (fails ? failed : installed).push_back(label);
    (void)receipts_.append({.label = label,
                            .timestamp = clock_.now(),
                            .status = fails ? PatchingStatus::failure : PatchingStatus::success,
                            .version = app->installed,
                            .targetVersion = app->latest,
                            .installomatorExitCode = fails ? kFailedExit : 0});
  }
  if (onRunEnded) onRunEnded(installed, failed);
  return patchRunAnswer(static_cast<std::int64_t>(installed.size()), labels.size(), {}, failed);
}

void SimulatedHelper::getPatchingProgress(Completion<PatchProgressInfo> done) {
  answerAfter<PatchProgressInfo>(polls_, Duration::zero(), std::move(done),
                                 [this] { return PatchProgressInfo{.isActive = runsOut_ > 0}; });
}

}  // namespace corvane
