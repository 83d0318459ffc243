// Sees to it that Installomator is there and current: fetches the edition that the settings name, has its syntax
// checked, and puts it in place. Never runs it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/lifeline.h"
#include "base/work_queue.h"
#include "core/logging/logging_service.h"
#include "helper/app_discoverer.h"
#include "helper/label_evaluation.h"
#include "helper/tool_place.h"
#include "helper/version_checker.h"
#include "platform/child_processes.h"
#include "platform/http_client.h"

namespace corvane {

// Where the public editions come from.
inline constexpr const char* kToolHost = "https://api.github.com";
inline constexpr std::uint64_t kToolDownloadLimit = 32U << 20U;
inline constexpr Duration kToolDownloadTime = 5min;
// The network may come any moment; labels change by the day.
inline constexpr Duration kToolRetry = 60s;
// An edition that came and is of no use does not become better by the minute; one that is needed is tried for all the
// same.
inline constexpr Duration kToolSecondLook = 1h;
inline constexpr Duration kToolInterval = 24h;

// Main thread. What cannot be fetched, is broken or is older than what is there changes nothing; the log tells a
// trouble once while it stays the same.
class ToolKeeper {
 public:
  struct Services {
    MainQueue& main;
    WorkQueue& work;
    const Clock& clock;
    LogSink& log;
    HttpClient& http;
    ChildProcesses& children;
    std::function<HelperSetting()> setting;
    std::optional<std::string> zsh;
    AccountSource account;            // whom the syntax check runs as
    std::optional<std::string> host;  // absent: only custom editions are taken
    uid_t ownUid = 0;
  };
  explicit ToolKeeper(Services services);
  ~ToolKeeper();

  // Settles what a crash left, looks at once and then every minute at what is due.
  void start();
  void stop();

 private:
  struct Attempt;
  void look();
  void fetch();
  void downloaded(const Result<HttpAnswer>& answer);
  void prepare(std::function<Result<ToolEdition>()> read);
  void prepared();
  void checked(const Result<ChildExit>& exit);
  void installed(const Status& status);
  void fail(std::string_view why, Duration again = kToolRetry);
  void finish(Duration again);

  Services s_;
  Logger log_;
  std::shared_ptr<Attempt> attempt_;  // the one under way
  std::optional<ToolSource> tried_;
  SteadyTime next_{};
  std::string told_;
  Lease looks_;
  Lifeline lifeline_;
};

}  // namespace corvane
