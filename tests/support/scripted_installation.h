// An installed helper that is registered as a test says, with its heartbeat among files in memory.
#pragma once

#include "core/client/helper_installation_service.h"
#include "platform/scripted/scripted_entropy.h"
#include "platform/scripted/scripted_files.h"
#include "platform/scripted/scripted_helper_registration.h"
#include "platform/scripted/scripted_own_bundle.h"
#include "support/scripted_preferences.h"

namespace corvane::testing {

struct ScriptedInstallation : ScriptedPreferences {
  static constexpr const char* kHeartbeat = "/support/helper-heartbeat";

  void beat() { files.put(kHeartbeat, "x"); }

  ScriptedHelperRegistration registration{machine.main()};
  ScriptedFiles files{machine.clock()};
  ScriptedOwnBundle bundle;
  ScriptedEntropy entropy;
  HelperInstallationService service{
      {registration, files, bundle, preferences, machine.clock(), machine.main(), entropy}, kHeartbeat};
};

}  // namespace corvane::testing
