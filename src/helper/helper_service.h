// What the helper does about a request: answers, or hands a run to the desk. Knows no socket.
#pragma once

#include <functional>
#include <string>

#include "base/lifeline.h"
#include "core/client/helper_messages.h"
#include "core/logging/logging_service.h"
#include "helper/app_discoverer.h"

#include "helper/run_desk.h"

namespace corvane {

// Discoveries, of all peers together, that may be without an answer before the next is told that the helper is busy.
// Counted here and not a connection, since what a peer asked for is done also after it has hung up. The programs have
// one or two under way; a scan takes about a second.
inline constexpr std::size_t kOpenDiscoveriesLimit = 32;

// Main thread. Each completion runs exactly once with a finished answer body. Status, progress and checks are
// answered during a run.
class HelperService {
 public:
  struct Services {
    MainQueue& main;
    AppDiscoverer& discoverer;
    VersionChecker& versions;

    RunDesk& desk;
    std::function<StatusInfo()> status;
  };
  explicit HelperService(Services services);

  void handle(HelperRequest request, Completion<std::string> answer);

  // Ends the run in hand and all children, and answers everybody who waits with `stopping`, as all who ask later.
  // `answered` runs in a later turn, once nobody waits any more.
  void stop(Task answered);

 private:
  using Answer = Completion<std::string>;
  [[nodiscard]] Answer counted(Answer answer);
  void tellAnswered();
  [[nodiscard]] std::size_t openDiscoveries() const { return open_ - openRuns_; }
  void discover(AppDiscoverer::Order order, std::string id, Answer answer);
  void queueRun(ask::StartPatching request, std::string id, Answer answer);

  Services s_;
  std::size_t openRuns_ = 0;
  std::size_t open_ = 0;  // requests that were not answered yet: runs, discoveries, and the one being handled
  Task answered_;
  bool stopping_ = false;
  Lifeline lifeline_;
};

}  // namespace corvane
