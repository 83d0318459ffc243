#include "app/launch_log.h"

#include <fmt/format.h>

#include "core/client/helper_installation_service.h"

namespace corvane {

std::string launchLine(const LaunchFacts& facts) {
  return fmt::format(
      "Launched v{} ({}); helperStatus={}; silentLaunch={}; backgroundLaunch={}; showDashboard={}; uid={}",
      facts.shortVersion.value_or("unknown"), facts.build.value_or("unknown"), helperStatusName(facts.helperStatus),
      facts.silentLaunch, facts.backgroundLaunch, facts.showDashboard, facts.uid);
}

}  // namespace corvane
