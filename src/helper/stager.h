// Downloads installers ahead of their installation, by the tool itself, one label after the other. Installs nothing.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/lifeline.h"
#include "base/work_queue.h"
#include "core/logging/logging_service.h"
#include "core/policies/deferral_install_behavior_resolver.h"
#include "helper/app_discoverer.h"
#include "helper/run_record.h"
#include "helper/staged_installers.h"
#include "platform/child_processes.h"

namespace corvane {

// The largest installers are some gigabytes; what takes longer has hung.
inline constexpr Duration kStagingTimeLimit = 1h;
// So much stays free for everything else on the disk: no download begins below the first, and one that reaches the
// second is ended.
inline constexpr std::uint64_t kStagingNeedsFree = 2ULL << 30U;
inline constexpr std::uint64_t kStagingLeavesFree = 1ULL << 30U;
inline constexpr Duration kFreeSpaceLook = 5s;

// The archive that a line of the tool names as downloaded.
[[nodiscard]] std::optional<std::string> downloadedArchiveIn(std::string_view line);

// Main thread. One staging at a time. The tool runs as a copy of its own in the label's work folder with DEBUG=1, which
// makes it download there and verify signature and team as for an install, and then stop; it asks and quits nothing.
class Stager {
 public:
  struct Services {
    ChildProcesses& children;
    MainQueue& main;
    WorkQueue& work;
    const Clock& clock;
    LogSink& log;
    AppDiscoverer& discoverer;
    StagedInstallers& staged;
    RunRecord& record;
    std::function<HelperSetting()> setting;
    const LabelInstallFactsSource& facts;
    std::function<std::uint64_t(const std::filesystem::path& folder)> freeBytes;
    std::filesystem::path toolHome;
    uid_t ownUid = 0;
  };
  explicit Stager(Services services);
  ~Stager();

  // Stages what of the labels needs an update whose version is known, and is not staged yet; the rest is left out. What
  // goes wrong is told to the log and costs that label only. Runs `done` once, in a later turn.
  void stage(Labels labels, Task done);

  // Ends the download in hand, and the staging behind it. `why` is for the log.
  void stop(std::string_view why = "the helper is stopping");

 private:
  struct Staging;
  void begin(const Result<Apps>& apps);
  [[nodiscard]] bool wanted(const AppInfo& app, const CorvaneConfiguration& config) const;
  void next();
  [[nodiscard]] Status startTool(const AppInfo& app);
  void watchFreeSpace();
  void toolEnded(const AppInfo& app, const Result<ChildExit>& exit);
  void finish();

  Services s_;
  Logger log_;
  Logger tool_;
  std::unique_ptr<Staging> staging_;
  Lifeline lifeline_;
};

}  // namespace corvane
