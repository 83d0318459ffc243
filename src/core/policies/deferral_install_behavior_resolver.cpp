#include "core/policies/deferral_install_behavior_resolver.h"

#include <array>

#include "core/preferences/options_codec.h"

namespace corvane {

namespace {

struct Action {
  std::string_view name;
  DeferralInstallBehavior behavior;
};

constexpr auto kActions =
    std::to_array<Action>({{"ignore", DeferralInstallBehavior::ignore},
                           {"quit", DeferralInstallBehavior::quit},
                           {"quit_kill", DeferralInstallBehavior::quitThenForceQuit},
                           {"kill", DeferralInstallBehavior::killed},
                           {"silent_fail", DeferralInstallBehavior::skippedWhileOpen},
                           {"prompt_user", DeferralInstallBehavior::askedToQuit},
                           {"prompt_user_then_kill", DeferralInstallBehavior::askedBeforeForceQuit},
                           {"prompt_user_loop", DeferralInstallBehavior::askedAgainInAnHour},
                           {"tell_user", DeferralInstallBehavior::toldToQuit},
                           {"tell_user_then_kill", DeferralInstallBehavior::toldToQuitOrForceQuit}});

bool optionsSwitchUpdateToolOff(std::string_view options) {
  const auto parsed = parseInstallomatorOptions(options);
  return parsed.forceInstall || parsed.ignoreAppStoreApps || optionValue(options, "updateTool").has_value();
}

}  // namespace

DeferralInstallBehavior DeferralInstallBehaviorResolver::behavior(const Setting& setting,
                                                                  const LabelInstallFacts& facts) {
  if (!setting.isOpen) {
    return setting.backgroundPatchClosedAppsEnabled ? DeferralInstallBehavior::updatesInBackground
                                                    : DeferralInstallBehavior::updatesWhenInstalled;
  }
  if (facts.ownUpdateToolExists && !optionsSwitchUpdateToolOff(setting.installomatorOptions))
    return DeferralInstallBehavior::ownUpdateTool;
  if (facts.blocksNothing) return DeferralInstallBehavior::ignore;
  const auto configured = optionValue(setting.installomatorOptions, "BLOCKING_PROCESS_ACTION");
  if (!configured) return DeferralInstallBehavior::toldToQuit;
  for (const auto& action : kActions)
    if (action.name == *configured) return action.behavior;
  return DeferralInstallBehavior::skippedWhileOpen;
}

}  // namespace corvane
