// The one zip that goes with a request for support: what the application and its helper are like, their logs, crash
// reports, preferences without secrets, state, and the latest receipts.
#pragma once

#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"
#include "base/lifeline.h"
#include "base/main_queue.h"
#include "base/task.h"
#include "base/work_queue.h"
#include "core/client/helper_installation_service.h"
#include "core/history/helper_state_stores.h"
#include "core/history/receipt_manager.h"
#include "core/logging/logging_service.h"
#include "core/places.h"
#include "diagnostics/diagnostic_run.h"
#include "platform/accounts.h"
#include "platform/child_processes.h"
#include "platform/clock.h"
#include "platform/console_session.h"
#include "platform/entropy.h"
#include "platform/locale.h"
#include "platform/own_bundle.h"

namespace corvane {

struct DiagnosticContent;
struct DiagnosticFacts;
class StagedBundle;

// Main thread. Nothing is kept from one call to the next, and several may run at once. A missing log, state or
// preference file is never a failure: it leaves its item out.
//
// Made by root, a bundle is about the person at the screen: logs, reports and preferences are taken from that person's
// home. Since others may write to some of these folders, no link below the root or a home is followed and no file of
// two names is taken; the zip is made in a folder of its own and put into its place without following a link there. It
// is readable for its owner alone: a token of GitHub in the preferences is not blacked out.
class DiagnosticBundleService {
 public:
  struct Error {
    static constexpr const char* domain = "CRVDiagnosticBundle";
    static constexpr int outputUnavailableCode = 1;
    static constexpr int zipFailedCode = 2;
    static constexpr int desktopUnavailableCode = 3;
    [[nodiscard]] static corvane::Error outputUnavailable(std::string_view path);
    // `stderrText`: what zip had to say; its outer blanks do not matter.
    [[nodiscard]] static corvane::Error zipFailed(std::int32_t exitCode, std::string_view stderrText);
    [[nodiscard]] static corvane::Error desktopUnavailable();
  };

  static constexpr std::size_t kReceipts = 50;  // the newest
  // A list of groups may lie on a directory server; the bundle goes on without it.
  static constexpr Duration kGroupsLimit = 10s;

  struct Services {
    MainQueue& main;
    WorkQueue& work;
    Clock& clock;
    const Locale& locale;
    Entropy& entropy;
    ChildProcesses& children;
    const Accounts& accounts;
    const ConsoleSessions& console;
    const OwnBundle& bundle;
    const HelperInstallationService& installation;
    const HelperBackgroundPatchStateStore& helperState;
    const ReceiptManager& receipts;
    const LoggingService& log;
    CorvaneConstants places;
    std::string operatingSystem;
    std::filesystem::path temporaryFolder;  // of the machine, never of the root
  };
  explicit DiagnosticBundleService(Services services);
  // Gives up what runs: zip is ended, the staging folder goes, nobody is told.
  ~DiagnosticBundleService();
  DiagnosticBundleService(const DiagnosticBundleService&) = delete;
  DiagnosticBundleService& operator=(const DiagnosticBundleService&) = delete;

  // `output`: an absolute path of the zip itself where it ends in ".zip" in any case, which replaces a file there;
  // otherwise a folder, made when missing. Absent: the Desktop. State, receipts and facts are those of now; the rest
  // happens off the main thread. `done` runs once in a later turn, with the zip's path or the first failure. The
  // staging folder is gone by then.
  void generateBundle(std::optional<std::filesystem::path> output, Completion<Result<std::filesystem::path>> done);

  // The same with no output; this outlives it.
  [[nodiscard]] DiagnosticRun toDesktop();

 private:
  struct Run;
  using Runs = std::list<Run>;

  [[nodiscard]] DiagnosticFacts facts(Date now) const;
  [[nodiscard]] std::filesystem::path homeConcerned(const DiagnosticFacts& facts) const;
  void stage(Runs::iterator run);
  void zip(Runs::iterator run);
  void finish(Runs::iterator run, Status zipped);
  void end(Runs::iterator run, Result<std::filesystem::path> result);

  Services s_;
  Runs runs_;
  Lifeline lifeline_;
};

}  // namespace corvane
