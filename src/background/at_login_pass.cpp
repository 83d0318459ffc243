#include "background/at_login_pass.h"

#include <fmt/format.h>

#include <chrono>
#include <utility>

#include "background/closed_apps.h"
#include "core/policies/at_login_pass_policy.h"
#include "core/policies/login_session.h"
#include "core/policies/network_readiness_checker.h"

namespace corvane {
namespace {

constexpr std::string_view kHandledSession = "BackgroundPatchAtLoginHandledSession";

}  // namespace

AtLoginPass::AtLoginPass(StatusViewModel& model, const BackgroundServices& services, Logger log,
                         std::function<void()> patchClosedApps)
    : model_(model), services_(services), log_(std::move(log)), patchClosedApps_(std::move(patchClosedApps)) {}

bool AtLoginPass::wanted(const CorvaneConfiguration& config) {
  return config.backgroundPatchAtLogin && patchesClosedAppsInApp(config);
}

void AtLoginPass::schedule(const CorvaneConfiguration& config) {
  if (!wanted(config) || atLoginPassScheduled_) return;
  auto& world = services_.workflow;
  if (!services_.console.sessions() && sessionsLooks_ < kSessionsLooks) {
    ++sessionsLooks_;
    next_ = world.main.after(kSessionsLook, [this] { schedule(*services_.workflow.preferences.loadConfiguration()); });
    return;
  }
  const auto login = LoginSession::consoleLoginTime(services_.userName, services_.console);
  const auto handled = world.preferences.readOptional<Date>(kHandledSession);
  if (!login || !AtLoginPassPolicy::shouldRun(login, handled, world.clock.now())) return;
  atLoginPassScheduled_ = true;
  login_ = *login;
  log_.info(fmt::format("Logged in at {}; the at-login check and closed-app pass start once the helper is ready.",
                        world.locale.calendar().iso8601(login_)));
  attemptIn(kFirstLook);
}

void AtLoginPass::attemptIn(Duration delay) {
  next_ = services_.workflow.main.after(delay, [this] { attempt(); });
}

void AtLoginPass::attempt() {
  auto& world = services_.workflow;
  const auto config = world.preferences.loadConfiguration();
  if (!wanted(*config)) return;
  if (world.clock.now() - login_ > AtLoginPassPolicy::window)
    return log_.info(
        fmt::format("The at-login pass did not start within {} minutes of login; leaving it to the normal schedule.",
                    std::chrono::floor<std::chrono::minutes>(AtLoginPassPolicy::window).count()));
  model_.refreshHelperState(true);
  if (config->backgroundPatchClosedAppsRequireOnAC && !world.power.isOnACPower()) return attemptIn(kPowerRetry);
  const auto& helper = model_.fields().helper;
  if (!helper.helperOperational || !helper.installomatorAvailable || !model_.isIdle()) return attemptIn(kNotReadyRetry);
  NetworkReadinessChecker::isInternetAvailable(services_.network, lifeline_.guard([this](bool available) {
    available ? attemptOnline() : attemptIn(kNetworkRetry);
  }));
}

// The answer took its time: something else may have begun.
void AtLoginPass::attemptOnline() {
  if (!model_.isIdle()) return attemptIn(kNotReadyRetry);
  services_.workflow.preferences.writePreference(kHandledSession, PlistValue(login_));
  log_.info("Running the at-login check for updates and closed-app pass.");
  model_.checkForUpdates();
  model_.queueIdleWork(lifeline_.guard([this] { patchClosedApps_(); }));
}

}  // namespace corvane
