#include "background/self_update_scheduler.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "background/background_notices.h"
#include "background/first_delay.h"
#include "base/ascii.h"
#include "core/policies/self_update_version_display.h"

namespace corvane {
namespace {

std::chrono::seconds intervalOf(SelfUpdateFrequency frequency) {
  using std::chrono::days;
  switch (frequency) {
    case SelfUpdateFrequency::daily:
      return days(1);
    case SelfUpdateFrequency::weekly:
      return days(7);
    case SelfUpdateFrequency::monthly:
      break;
  }
  return days(30);
}

Label labelOf(const CorvaneConfiguration& config) { return Label(std::string(trimmed(config.selfUpdateLabel.text))); }

}  // namespace

SelfUpdateScheduler::SelfUpdateScheduler(StatusViewModel& model, const BackgroundServices& services)
    : model_(model),
      services_(services),
      log_(services.workflow.log, "SelfUpdateScheduler"),
      timer_(services.workflow.main) {}

void SelfUpdateScheduler::start() {
  timer_.stop();
  auto& world = services_.workflow;
  const auto config = world.preferences.loadConfiguration();
  if (!config->selfUpdateEnabled) return log_.info("Self-update disabled in configuration; not scheduling.");
  const auto label = labelOf(*config);
  if (label.empty()) return log_.warning("SelfUpdateLabel is empty; not scheduling.");
  const auto interval = intervalOf(config->selfUpdateFrequency);
  const auto first = firstDelay(world.preferences.readLastSelfUpdateCheckDate(), world.clock.now(), interval);
  timer_.start({.first = first, .interval = interval, .leeway = kTickLeeway}, [this] { tick(); });
  log_.info(fmt::format("Started — frequency={}, label={}, firstFire={}s.", rawName(config->selfUpdateFrequency),
                        label.text, first.count()));
}

void SelfUpdateScheduler::tick() {
  auto& world = services_.workflow;
  const auto config = world.preferences.loadConfiguration();
  const Question question{.label = labelOf(*config), .config = config};
  if (!question.config->selfUpdateEnabled || question.label.empty()) return;
  const auto& fields = model_.fields();
  if (!model_.isIdle())
    return log_.info(fmt::format("Skipping tick — dashboard busy (isPatching={}, isLoading={}).",
                                 fields.gate.isPatching, fields.gate.isLoading));
  model_.refreshHelperState(true);
  if (!fields.helper.helperOperational || !fields.helper.installomatorAvailable)
    return log_.info("Skipping tick — helper or Installomator not ready.");
  log_.info(fmt::format("Checking for CRV self-update via label '{}'…", question.label.text));
  world.helper.discoverAppsForLabels(
      {question.label}, true,
      lifeline_.guard([this, question](const Result<Apps>& apps) { answered(question, apps); }));
}

// A check that failed counts as a check: the next one comes with the next tick.
void SelfUpdateScheduler::answered(const Question& question, const Result<Apps>& apps) {
  auto& world = services_.workflow;
  world.preferences.writeLastSelfUpdateCheckDate(world.clock.now());
  if (!apps) return log_.warning("Discovery failed: " + apps.error().text);
  const auto own = std::ranges::find(*apps, question.label, &AppInfo::label);
  if (own == apps->end())
    return log_.info(fmt::format("Installomator did not return label '{}'; nothing to do.", question.label.text));
  if (own->newVersion.value_or("").empty())
    return log_.info(fmt::format("No newVersion reported for '{}'; assuming up to date.", question.label.text));
  judge(question, *own->newVersion);
}

void SelfUpdateScheduler::judge(const Question& question, const std::string& available) {
  using Check = SelfUpdateVersionCheck;
  const auto& config = *question.config;
  const RunningVersions running{.shortVersion = services_.bundle.shortVersion(),
                                .bundleVersion = services_.bundle.version()};
  const auto source =
      Check::labelSource(question.label, services_.workflow.places.fragmentsPath(), services_.workflow.files);
  const auto key = Check::versionKey(source);
  const auto shown = Check::displayedRunningVersion(running, key);
  const auto told = shown.value_or("?");
  if (!Check::needsUpdate(running, available, key, config.versionComparisonMethod)) {
    log_.info(
        fmt::format("Running version {} already satisfies available {}; no self-update needed.", told, available));
    return model_.setSelfUpdateAvailable(std::nullopt);
  }
  if (config.backgroundPatchClosedAppsEnabled) {
    log_.info(fmt::format("Background-patch enabled — installing self-update silently {} -> {}.", told, available));
    model_.setSelfUpdateAvailable(std::nullopt);
    return model_.startSelfUpdate(question.label);
  }
  log_.info(fmt::format("Self-update available ({} -> {}). Surfacing to dashboard.", told, available));
  offer(question.label, available,
        Check::comparesBundleVersion(key)
            ? SelfUpdateVersionDisplay::combined(running.shortVersion, running.bundleVersion)
            : shown);
}

void SelfUpdateScheduler::offer(const Label& label, const std::string& available, std::optional<std::string> running) {
  using Display = SelfUpdateVersionDisplay;
  SelfUpdateAvailability update{.label = label, .availableVersion = available, .runningVersion = std::move(running)};
  if (lowercased(label.text) != SelfUpdateVersionCheck::bundledLabelName || !Display::isBuildNumber(available))
    return surface(update, available);
  auto& world = services_.workflow;
  Display::refresh(available, {.preferences = world.preferences, .http = services_.http, .clock = world.clock},
                   lifeline_.guard([this, update, available](std::optional<std::string> display) mutable {
                     if (!display) display = Display::cachedDisplay(available, services_.workflow.preferences);
                     update.availableVersion = display.value_or(available);
                     surface(update, available);
                   }));
}

void SelfUpdateScheduler::surface(const SelfUpdateAvailability& update, const std::string& available) {
  model_.setSelfUpdateAvailable(update);
  services_.router.post(selfUpdateNotice(update, available), *services_.workflow.preferences.loadConfiguration(),
                        warningOnFailure(log_, "Failed to deliver self-update notification"));
}

}  // namespace corvane
