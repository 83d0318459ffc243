// Which of two instances of the application goes on. Takes no lock and ends no process.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <string_view>

namespace corvane {

enum class GUIInstanceClaim { primary, yield, replaceExisting };

struct GUIInstancePolicy {
  using Environment = std::map<std::string, std::string, std::less<>>;

  // Set by our login agent's own description. The application takes it out of its environment at once, so that
  // a child never seems to be started by the agent.
  static constexpr std::string_view agentVariable = "CORVANE_LAUNCH_AGENT";

  // The service manager's variable that names the process it started; others it sets are inherited by every
  // child and prove nothing.
  static constexpr std::string_view serviceManagerVariable = "SYSTEMD_EXEC_PID";

  // The agent's variable is there and not empty.
  [[nodiscard]] static bool launchedByAgent(const Environment& environment);

  // Started by the agent, or by the service manager as this very process.
  [[nodiscard]] static bool launchedByLaunchdJob(const Environment& environment, pid_t ownPid);

  // A free lock is ours. Against a holder an agent's start wins, since the service manager would start it
  // again and again; any other start yields.
  [[nodiscard]] static constexpr GUIInstanceClaim claim(bool lockHeldByOther, bool launchedByAgent) {
    if (!lockHeldByOther) return GUIInstanceClaim::primary;
    return launchedByAgent ? GUIInstanceClaim::replaceExisting : GUIInstanceClaim::yield;
  }
};

}  // namespace corvane
