#include "core/policies/gui_instance_policy.h"

namespace corvane {

bool GUIInstancePolicy::launchedByAgent(const Environment& environment) {
  const auto variable = environment.find(agentVariable);
  return variable != environment.end() && !variable->second.empty();
}

bool GUIInstancePolicy::launchedByLaunchdJob(const Environment& environment, pid_t ownPid) {
  if (launchedByAgent(environment)) return true;
  const auto variable = environment.find(serviceManagerVariable);
  return variable != environment.end() && variable->second == std::to_string(ownPid);
}

}  // namespace corvane
