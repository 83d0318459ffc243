// What a request for all updates means at this moment: nothing to do, an install at once, or the question to the
// user. No prompt and no install rests on a stale list: both come after a check of the labels they are about.
#pragma once

#include "workflow/room_context.h"

namespace corvane {

class UpdateAllFlow {
 public:
  UpdateAllFlow(const RoomContext& context, UpdateAllFields& fields) : c_(context), fields_(fields) {}

  // A request while something else runs is dropped, not queued.
  void updateAll(DeferralPromptHost host);
  // The user has confirmed already: no prompt.
  void updateAllFromMenuBar();
  // The answer of the prompt. While something else runs it waits, once, and only for the prompt it was given to.
  void installNow();
  // Arms the forced install of a prompt that is about to be hard, by business hours and what is armed. Only a deadline
  // that was reached is remembered as fired: one that is still ahead cannot have been missed.
  void armEnforcement(HardPromptReason reason);

 private:
  void recheck(const Labels& labels, std::move_only_function<void()> then);
  void continueUpdateAll(DeferralPromptHost host, const Labels& labels);
  void recheckThenInstall(const Labels& labels);
  void installAfterRecheck(const Labels& labels);
  void queueInstallNow();
  void nothingToUpdate(std::string_view logLine);
  void nothingLeft(std::string_view logLine);
  void setPending(Labels labels);
  [[nodiscard]] Labels unconfirmedRecheckLabels(const Labels& labels, const AppFacts& facts) const;

  RoomContext c_;
  UpdateAllFields& fields_;
  Lifeline lifeline_;
};

}  // namespace corvane
