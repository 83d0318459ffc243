// The helper on its own, on virtual time: the tool, the process list, power and network are scripted, bundles and
// labels are real files.
#pragma once

#include <string>
#include <utility>

#include "core/history/helper_state_stores.h"
#include "helper/own_work.h"
#include "helper/runner_fixture.h"
#include "platform/posix/posix_files.h"
#include "platform/scripted/scripted_preference_domains.h"
#include "platform/scripted/scripted_running_applications.h"
#include "platform/scripted/scripted_surroundings.h"

namespace corvane {

inline const std::filesystem::path kState = "/helper-state.json";
inline const std::filesystem::path kApps = "/helper-discovered-apps.json";
inline constexpr Duration kMinute = kOwnWorkLook + kOwnWorkLeeway;

struct OwnWorkFixture : RunnerFixture {
  ScriptedPreferenceDomains domains{machine.main()};
  NotificationCenter notifications{machine.main()};
  PreferenceManager preferences{domains, notifications, log};
  PosixFiles disk;
  ReceiptsSnapshot histories{receipts, files};
  HelperStateFile state{kState, kApps, files, machine.clock(), log};
  HelperBackgroundPatchStateStore reader{kState, files, log};
  ScriptedRunningApplications processes;
  ScriptedPowerSource power;
  ScriptedNetworkProbe network{machine.main()};
  RunDesk desk{{.log = log, .runner = runner, .stager = stager}};
  std::optional<OwnWork> work;

  OwnWorkFixture() {
    auto& config = setting.config;
    config.backgroundPatchClosedAppsEnabled = true;
    config.backgroundPatchClosedAppsScheduler = BackgroundPatchSchedulerMode::helperDaemon;
    config.discoveryFrequency = DiscoveryFrequency::off;
    config.workflowStageUpdates = false;
    for (const char* name : {"quill", "stamp"}) {
      label(name, "1.0", "2.0");
      plays[name] = {"2.0", {.takes = 1min}};
    }
  }
  void start() {
    state.settle();
    work.emplace(OwnWork::Services{.main = machine.main(),
                                   .clock = machine.clock(),
                                   .entropy = entropy,
                                   .log = log,
                                   .files = disk,
                                   .preferences = preferences,
                                   .histories = histories,
                                   .discoverer = discoverer,
                                   .desk = desk,
                                   .state = state,
                                   .processes = processes,
                                   .power = power,
                                   .network = network,
                                   .setting = [this] { return setting; },
                                   .calendar = [] { return Calendar::utc(); },
                                   .toolReady = [] { return Status(); }});
    work->start();
  }
  [[nodiscard]] std::string bundle(const std::string& name) const {
    return (folder.path() / "Applications" / (name + ".app")).string();
  }
  [[nodiscard]] HelperPatchState told() const { return reader.read().value_or(HelperPatchState{}); }
  [[nodiscard]] std::string installed(const std::string& name) const {
    const auto info = testing::TemporaryFolder::read(bundle(name) + "/Contents/Info.plist");
    return info.find(">2.0<") != std::string::npos ? "2.0" : "1.0";
  }
};

}  // namespace corvane
