#include "sample/scenes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <vector>

#include "base/plist.h"
#include "core/places.h"
#include "core/policies/patching_cadence_manager.h"
#include "core/policies/version_comparator.h"
#include "core/records/history_records.h"
#include "platform/posix/instance_lock.h"
#include "sample/sample_mac.h"

namespace corvane::sample {

namespace fs = std::filesystem;

namespace {

constexpr int kDeferralLimit = 3;
constexpr int kDaysLimit = 3;
constexpr int kRequiredCountdown = 120;  // seconds: long enough to read the prompt, short enough to see its end
constexpr int kUnhurriedCountdown = 600;

// The one application of the sample whose installation always fails, and how.
constexpr std::string_view kFailing = "rookeryserver";
constexpr int kItsExitCode = 9;
constexpr std::size_t kSuccesses = 3;

// Of the state on the sample: what was found on it, and what the programs know of the helper.
constexpr const char* kKept[] = {"DiscoveredAppsData",         "LastDiscoveryDate",          "LastUpdateCheckDate",
                                 "LastInventoryFingerprint",   "LastFullInventoryCheckDate", "FirstRunSetupCompleted",
                                 "LastRegisteredHelperCDHash", "LastAutoHelperResetDate"};

struct Stage {
  Date now;
  Calendar calendar;
  Apps apps;
};

struct Content {
  PlistDict user;
  PlistDict managed;
  std::vector<PatchingReceipt> receipts;
};

bool isOutdated(const AppInfo& app) {
  return app.isInstalled() && !app.updateCheckFailed && !app.teamIDMismatch &&
         VersionComparator::hasUpdate(app.currentVersion, app.currentBundleVersion, app.newVersion,
                                      VersionComparisonMethod::isAtLeast);
}

// A cycle that began so many days ago, with the setting that gives it, so that a scene is the same on every day
// of the week.
CadenceState putCycle(Content& content, const Stage& stage, int daysAgo) {
  const auto weekday = stage.calendar.weekday(stage.calendar.addDays(stage.now, -daysAgo));
  const auto state = PatchingCadenceManager({.patchWeekStartDay = weekday}, stage.calendar).armedState(stage.now);
  content.user["PatchWeekStartDay"] = weekday;
  content.user["CurrentPatchingStartDate"] = state.currentPatchingStartDate.value();
  content.user["NextCycleStartDate"] = state.nextCycleStartDate.value();
  return state;
}

void putDueDeferral(Content& content, const Stage& stage, int deferrals) {
  const auto cycle = putCycle(content, stage, 0);
  content.user["DeadlineCountHard"] = kDeferralLimit;
  content.user["DeadlineDaysHard"] = kDaysLimit;
  content.user["HardDeferralCount"] = deferrals;
  content.user["HardDeferralDate"] = stage.calendar.addDays(cycle.currentPatchingStartDate.value(), kDaysLimit);
  content.user["NextAutoLaunch"] = stage.now;
}

Content prompt(const Stage& stage) {
  Content content;
  putDueDeferral(content, stage, 1);
  return content;
}

Content hard(const Stage& stage) {
  Content content;
  putDueDeferral(content, stage, kDeferralLimit);
  content.managed["DialogTimeoutDeferral"] = kRequiredCountdown;
  return content;
}

Content confirmation(const Stage& stage) {
  auto content = prompt(stage);
  content.managed["DeferralDialogPrimaryButton"] = "continue";
  content.managed["DialogTimeoutDeferral"] = kUnhurriedCountdown;
  return content;
}

// An Update All of two days ago with an error, as an organisation has it that does not let one failure hold up
// the cycle. What is outdated now came after it.
Content completedCycle(const Stage& stage) {
  const auto failing = std::ranges::find(stage.apps, kFailing, [](const AppInfo& app) { return app.label.text; });
  if (failing == stage.apps.end())
    throw MakingFailed(fmt::format("{} is not among the applications found on the sample", kFailing));
  Content content;
  const auto cycle = putCycle(content, stage, 3);
  auto moment = stage.calendar.addDays(cycle.currentPatchingStartDate.value(), 1) + 17h + 40min;
  for (const auto& app : stage.apps) {
    if (content.receipts.size() == kSuccesses) break;
    if (!app.currentVersion || !app.newVersion || app.updateCheckFailed || app.teamIDMismatch || isOutdated(app))
      continue;
    content.receipts.push_back({.label = app.label,
                                .timestamp = moment += 90s,
                                .status = PatchingStatus::success,
                                .version = app.currentVersion,
                                .targetVersion = app.newVersion});
  }
  content.receipts.push_back({.label = failing->label,
                              .timestamp = moment += 90s,
                              .status = PatchingStatus::failure,
                              .version = failing->currentVersion,
                              .targetVersion = failing->newVersion,
                              .installomatorExitCode = kItsExitCode});
  content.user["LastPatchingCompletionDate"] = moment + 1s;
  content.user["WorkflowUpdateAllErrorCompletesPatching"] = true;
  content.user["UpdateAllErrorClearedLabels"] = PlistArray{PlistValue(kFailing)};
  return content;
}

struct Row {
  Scene scene;
  Content (*content)(const Stage&);
};

constexpr Row kRows[] = {
    {{"prompt", "Updates are pending, and a deferral has just run out: 1 of 3 is used, the deadline is days away.",
      "The prompt opens in a window of its own as soon as the updates were checked once more."},
     prompt},
    {{"hard", "Every deferral is used: the updates are required now.",
      "The prompt opens by itself and counts two minutes down; at their end the updates are installed."},
     hard},
    {{"confirmation", "As prompt, with ten minutes to answer, and Return on the button that installs.",
      "When the prompt is there, press Return or its button \"Update\": it asks whether you are sure, and takes "
      "silence for a yes after a few seconds."},
     confirmation},
    {{"completed-cycle", "Patching was completed two days ago, with one failure; what is new awaits the next cycle.",
      "The dashboard says that it is complete, `corvanectl status` when the next one starts. \"Update All\" does not "
      "ask."},
     completedCycle},
};

constexpr auto kScenes = [] {
  std::array<Scene, std::size(kRows)> list;
  std::ranges::transform(kRows, list.begin(), &Row::scene);
  return list;
}();

PlistDict preferencesIn(const fs::path& file) {
  auto document = parsePlist(take(file));
  const auto* values = document ? document->root.dict() : nullptr;
  if (values == nullptr) throw MakingFailed(fmt::format("{} is damaged", file.string()));
  return *values;
}

Apps discovered(const PlistDict& user) {
  const auto stored = user.find("DiscoveredAppsData");
  const auto bytes = stored == user.end() ? std::nullopt : stored->second.data();
  const auto json = bytes ? parseJson(*bytes) : Result<JsonValue>(JsonArray());
  auto apps = json ? appsFromJson(*json) : Result<Apps>(std::unexpected(json.error()));
  if (!apps) throw MakingFailed("the sample's inventory is damaged: " + apps.error().text);
  if (std::ranges::none_of(*apps, [](const AppInfo& app) { return app.newVersion.has_value(); }))
    throw NothingDiscovered("the sample's applications were not looked for yet; corvanectl discover does");
  if (std::ranges::none_of(*apps, isOutdated))
    throw MakingFailed("nothing is left to update on this sample; make it fresh with sample.sh reset");
  return *std::move(apps);
}

std::string bytesOf(const PlistDict& values, PlistFormat format) {
  auto bytes = writePlist(values, format);
  if (!bytes) throw MakingFailed(bytes.error().text);
  return *std::move(bytes);
}

}  // namespace

std::span<const Scene> scenes() { return kScenes; }

const Scene* sceneNamed(std::string_view name) {
  const auto found = std::ranges::find(kScenes, name, &Scene::name);
  return found == kScenes.end() ? nullptr : &*found;
}

void putScene(const Scene& scene, const fs::path& sample, Date now, const Calendar& calendar) {
  if (!fs::exists(sample / kMarker)) throw MakingFailed(fmt::format("{} is no sample", sample.string()));
  const CorvaneConstants at{.root = fs::canonical(sample), .home = fs::canonical(sample) / "Users" / kUserName};
  InstanceLock lock(at.instanceLock());
  const auto attempt = lock.take();
  if (attempt.outcome == SessionLock::Outcome::heldByOther)
    throw MakingFailed("Corvane or corvanectl is at work on this sample; quit it first");
  if (attempt.outcome != SessionLock::Outcome::taken)
    throw MakingFailed(fmt::format("Claiming {}: {}", lock.path().string(), attempt.error));

  const auto before = preferencesIn(at.userPreferencesPath());
  const auto& row = *std::ranges::find(kRows, scene.name, [](const Row& each) { return each.scene.name; });
  auto content = row.content({.now = now, .calendar = calendar, .apps = discovered(before)});
  content.user.merge(userSettings());
  for (const auto* key : kKept)
    if (const auto kept = before.find(key); kept != before.end()) content.user.insert(*kept);
  content.managed.merge(managedSettings());
  std::string receipts;
  for (const auto& receipt : content.receipts) receipts += writeJson(toJson(receipt)) + "\n";

  put(at.userPreferencesPath(), bytesOf(content.user, PlistFormat::binary));
  put(at.managedPreferencesPath(), bytesOf(content.managed, PlistFormat::xml));
  put(at.receipts(), receipts);
}

}  // namespace corvane::sample
