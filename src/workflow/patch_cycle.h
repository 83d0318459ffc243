// What the end of a run means for the cycle: closed, tried again, or left as it stands.
#pragma once

#include "workflow/room_context.h"

namespace corvane {

class PatchCycle {
 public:
  explicit PatchCycle(const RoomContext& context) : c_(context) {}

  // Only an Update All has a follow-up: a retry, or the cycle recorded as complete, as configured.
  void applyPatchErrorFollowUp(DiscoveryOperation operation, const Labels& labels, const std::string& message);
  // Updates that the user declined, or that an open application held up, leave the cycle open; an Update All asks for
  // them again as it does after an error.
  void updatesPutOff(DiscoveryOperation operation, const Labels& labels);
  void completePatchingCycle();
  void recordSuccessfulPatchRun(Date completedAt);
  // Closes a cycle in which something was deferred and nothing is left. Gives whether it did.
  bool completeSatisfiedDeferralCycleIfNeeded();

 private:
  void retryLater(std::int64_t minutes);
  [[nodiscard]] Date armRetry(std::int64_t minutes);
  void markComplete(const Labels& labels, const std::string& message);
  void closePrompt();
  [[nodiscard]] std::int64_t inconclusiveChecks(const AppFacts& facts) const;

  RoomContext c_;
};

}  // namespace corvane
