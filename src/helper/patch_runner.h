// One patch run: label after label through the tool, each verified before its receipt is written. Who may start a
// run, and when, is the queue's business.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/lifeline.h"
#include "base/main_queue.h"
#include "core/history/receipt_manager.h"
#include "core/logging/logging_service.h"
#include "helper/app_discoverer.h"
#include "helper/patch_decision.h"
#include "helper/run_record.h"
#include "helper/staged_installers.h"
#include "platform/child_processes.h"
#include "platform/clock.h"

namespace corvane {

// Whether the tool can be run safely: a regular file with leave to execute that, as each folder above it up to `root`,
// belongs to root or us and that nobody else can exchange. Fails with HelperErrorCode::notReady and a text for the
// user.
[[nodiscard]] Status checkTool(const std::filesystem::path& script, const std::filesystem::path& root, uid_t ownUid);

// Whether somebody asked for the run. In one that nobody asked for no application may be quit and nobody be asked: the
// configured action counts only where it is "ignore", else the tool leaves a label alone that is blocked.
enum class Attendance { attended, unattended };

// "<label>", "DEBUG=0" and the configured options, quoted for the tool's evaluation; what is left out goes to the log.
[[nodiscard]] std::vector<std::string> toolArguments(const Label& label, const HelperSetting& setting,
                                                     Attendance attendance, const Logger& log);

// What a run is to do.
struct PatchOrder {
  Labels labels;
  Attendance attendance = Attendance::attended;
  // Asked right before the tool is run for a label: a reason leaves that label out.
  std::function<std::optional<std::string>(const AppInfo& app)> objection = {};
  // Told when the run comes to a label: its place in `labels`, and what is known of its application.
  std::function<void(std::size_t done, const std::optional<AppInfo>& app)> comesTo = {};
};

// Main thread. One run at a time.
class PatchRunner {
 public:
  struct Services {
    ChildProcesses& children;
    MainQueue& main;
    const Clock& clock;
    LogSink& log;
    ReceiptManager& receipts;
    AppDiscoverer& discoverer;
    RunRecord& record;
    StagedInstallers& staged;
    std::function<HelperSetting()> setting;
    std::filesystem::path toolHome;  // HOME of the tool
    uid_t ownUid = 0;
  };
  explicit PatchRunner(Services services);
  ~PatchRunner();

  // Settings are read once a label, so that a change counts from the next one on. Runs `done` once, in a later turn.
  // Its error is notReady, unknownLabel (none of the labels is known), storage, stopping, or what discovery failed
  // with, when nothing was or could be done. A receipt that cannot be written ends the run with storage too: the labels
  // up to that one were done.
  void run(PatchOrder order, Completion<RunReport> done);

  [[nodiscard]] PatchProgressInfo progress() const;

  // Ends the tool, politely first, and the run, which is answered with `stopping` once the tool has ended. The label
  // in hand gets no receipt, but its record stays, so that the next start tells of it.
  void stop();

 private:
  struct Run;
  void begin(Result<Apps> apps);
  void nextLabel();
  void runTool(const Label& label, const AppInfo& before);
  void toolLine(const Label& label, std::string_view line);
  void toolEnded(const AppInfo& before, Result<ChildExit> exit);
  void stopped();
  void verify(const AppInfo& before, ToolEnd end);
  void settle(PatchOutcome outcome);
  void endWithoutReceipt(const Label& label, const Error& error);
  void finish(std::optional<Error> error = std::nullopt);

  Services s_;
  Logger log_;
  Logger tool_;
  std::unique_ptr<Run> run_;
  Lifeline lifeline_;
};

}  // namespace corvane
