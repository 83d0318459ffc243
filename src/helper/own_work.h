// What the helper does without being asked: the background pass over closed applications and the scheduled discovery.
// Decides by own_schedule and background_pass; installs nothing itself.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/calendar.h"
#include "base/lifeline.h"
#include "core/history/label_history_caches.h"
#include "core/preferences/preference_manager.h"
#include "helper/app_discoverer.h"
#include "helper/background_pass.h"
#include "helper/helper_state_file.h"
#include "helper/own_schedule.h"
#include "helper/run_desk.h"
#include "platform/entropy.h"
#include "platform/network_probe.h"
#include "platform/power_source.h"
#include "platform/running_applications.h"

namespace corvane {

// The settings and dates are looked at so often: they change by other programs' hands, a sleeping machine counts, and
// nobody tells the helper.
inline constexpr Duration kOwnWorkLook = 60s;
inline constexpr Duration kOwnWorkLeeway = 15s;

// Main thread. One thing at a time: when both are due, one check of versions serves both.
class OwnWork {
 public:
  struct Services {
    MainQueue& main;
    const Clock& clock;
    Entropy& entropy;
    LogSink& log;
    const Files& files;
    const PreferenceManager& preferences;
    const ReceiptsSnapshot& histories;
    AppDiscoverer& discoverer;
    RunDesk& desk;
    HelperStateFile& state;
    const RunningApplications& processes;
    const PowerSource& power;
    NetworkProbe& network;
    std::function<HelperSetting()> setting;
    std::function<Calendar()> calendar;
    std::function<Status()> toolReady;
    std::chrono::seconds firstWork = kFirstOwnWork;
  };
  explicit OwnWork(Services services);

  void start();
  // Begins nothing more. A run of ours is the desk's to end.
  void stop();

 private:
  struct Pass;
  void look();
  void arm(const CorvaneConfiguration& config);
  [[nodiscard]] bool discoveryWanted(const CorvaneConfiguration& config) const;
  [[nodiscard]] bool mayPass(const HelperSetting& setting) const;
  void begin(bool pass, bool discovery);
  void check(bool pass, bool discovery);
  void checked(bool pass, bool discovery, const Result<Apps>& apps);
  void publish(const Apps& apps, const CorvaneConfiguration& config);
  void pass(const Apps& apps, const HelperSetting& setting);
  [[nodiscard]] PassFacts facts(const Apps& apps, const CorvaneConfiguration& config) const;
  [[nodiscard]] std::optional<RunningBundles> running(const Apps& apps) const;
  [[nodiscard]] std::optional<std::string> objection(const AppInfo& app) const;
  // `first` of what is installed has a name from the beginning, while downloads come before it.
  void startRun(const PassDecision& decision, const AppInfo& first);
  void stage(const Labels& labels);
  void comesTo(const Pass& pass, std::size_t done, const std::optional<AppInfo>& app);
  void runEnded(const Pass& pass, const RunReport& report);

  Services s_;
  Logger pass_;
  Logger discovery_;
  std::optional<PassPlan> plan_;  // what nextPass_ was worked out from
  std::optional<Date> nextPass_;
  SteadyTime noDiscoveryBefore_{};
  bool working_ = false;
  Lease firstLook_;
  Lease looks_;
  Lifeline lifeline_;
};

}  // namespace corvane
