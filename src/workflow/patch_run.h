// One batch of labels through the helper: start, progress, and how it ended. What an end means for the cycle is
// decided elsewhere. It refuses no start but those that say so.
#pragma once

#include "workflow/room_context.h"

namespace corvane {

class PatchRun {
 public:
  static constexpr Duration kPollInterval = 2s;

  PatchRun(const RoomContext& context, PatchFields& fields);

  // Callers have tested the gate. `completion` may be empty; it runs when the answer has been settled.
  void startPatching(const Labels& labels, DiscoveryOperation operation, const Labels& alsoStageLabels,
                     PatchCompletion completion);
  // Answers at once, without a run, when there is nothing to do or something else is under way.
  void startBackgroundPatch(const Labels& labels, const Labels& alsoStageLabels, PatchCompletion completion);
  void updateApp(const AppInfo& app);

 private:
  struct Run {
    DiscoveryOperation operation;
    Labels labels;
    Date startedAt;
    PatchCompletion completion;
  };

  void poll();
  void showProgress(const PatchProgressInfo& info);
  void applyPatchResult(Run run, const Result<PatchRunAnswer>& answer);
  void startFailed(Run run, const Error& error);
  void finishedWithErrors(Run run, const PatchRunAnswer& answer);
  void finishedWell(Run run, const PatchRunAnswer& answer);
  // `message` still names labels; `shown` is for people, and stands until the recheck is answered.
  void followUpError(const Run& run, const std::string& message, const std::string& shown);
  void recheck(const Labels& labels, bool takenOver);
  // What the run skipped, by its receipts, and what is therefore still to be done.
  [[nodiscard]] Labels putOffBy(const Run& run, const AppFacts& facts) const;
  void settle(Run& run, bool success, const std::string& message, std::int64_t installed);
  void sendFinished(const Run& run, const char* outcome);

  RoomContext c_;
  PatchFields& fields_;
  Lease poll_;
  Lifeline lifeline_;
};

}  // namespace corvane
