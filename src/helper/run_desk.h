// Where runs come in, wait, and are started one at a time: first what is to be staged, then what is to be installed.
// Knows no protocol, and nothing of how either is done.
#pragma once

#include <functional>
#include <map>

#include "base/lifeline.h"
#include "core/client/helper_messages.h"
#include "core/logging/logging_service.h"
#include "helper/patch_runner.h"
#include "helper/run_queue.h"
#include "helper/stager.h"

namespace corvane {

// Main thread. Each completion runs exactly once.
class RunDesk {
 public:
  struct Services {
    LogSink& log;
    PatchRunner& runner;
    Stager& stager;
    // Told of the end of each run that began to install, before its asker is.
    std::function<void(const RunReport&)> runEnded = [](const RunReport&) {};
  };
  explicit RunDesk(Services services);
  ~RunDesk();

  // A staging in hand makes way for an install, whoever asks; it is begun again when it is asked for again.

  // A client's. Beyond the runner's errors it may be answered with busy, at once; with replaced, when a newer staging
  // takes the place of a waiting one; and with stopping.
  void ask(ask::StartPatching request, Completion<Result<PatchRunAnswer>> done);

  // The helper's own run, which goes before all that wait. `begins` is called when its turn has come, before any label.
  struct OwnRun {
    PatchOrder order;
    Labels alsoStageLabels;
    Task begins = [] {};
  };
  void askOwn(OwnRun run, Completion<RunReport> done);

  // Of the run in hand; while its installers are downloaded none of its labels is done.
  [[nodiscard]] PatchProgressInfo progress() const;

  // Ends the run in hand, and answers all who wait, and whoever asks later, with `stopping`.
  void stop();

 private:
  struct Waiting {
    OwnRun run;
    Completion<RunReport> done;
  };
  void makeWayFor(const Labels& install);
  void settleOffer(const RunQueue::Offer& offer, Waiting waiting);
  void startNext();
  void install(RunQueue::Ticket ticket);
  void ended(RunQueue::Ticket ticket, RunReport report);
  void answer(RunQueue::Ticket ticket, RunReport report);

  Services s_;
  Logger log_;
  RunQueue queue_;
  std::map<RunQueue::Ticket, Waiting> waiting_;
  std::optional<RunQueue::Ticket> staging_;  // whose installers are downloaded first
  bool stopping_ = false;
  Lifeline lifeline_;
};

}  // namespace corvane
