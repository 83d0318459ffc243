// A preference store in memory, on virtual time.
#pragma once

#include "base/notification_center.h"
#include "core/preferences/preference_manager.h"
#include "platform/scripted/scripted_preference_domains.h"
#include "platform/scripted/virtual_time.h"
#include "support/recording_log.h"

namespace corvane::testing {

struct ScriptedPreferences {
  VirtualMachine machine;
  NotificationCenter notifications{machine.main()};
  ScriptedPreferenceDomains domains{machine.main()};
  RecordingLog log;
  PreferenceManager preferences{domains, notifications, log};
};

}  // namespace corvane::testing
