// The deferral prompt: when it stands, what it offers and says, and what its answers do. Whether to ask is decided
// elsewhere; counters and deadlines are the policy's.
#pragma once

#include <string>
#include <vector>

#include "core/policies/deferral_manager.h"
#include "workflow/deferral_prompt_app.h"
#include "workflow/room_context.h"

namespace corvane {

class DeferralActions {
 public:
  // How long the dialog stays hidden when nobody can tell what keeps the display awake.
  static constexpr Duration kInconclusiveWait = 30s;

  DeferralActions(const RoomContext& context, DeferralFields& fields);

  // The stored hard date, for display.
  void load();

  void setPromptHost(DeferralPromptHost host);
  // Sets the prompt up for the escalation, with the first length on offer, and presents it.
  void ask(DeferralEscalation escalation);
  void presentDeferralPrompt();
  void dismissDeferralPrompt();
  // Closed without an answer at normal or focus: nothing is recorded, and what is armed stays.
  void closeUnanswered();
  void userClosedHardDeadlineDialog();
  // Refused once the hard deadline is reached, or when no length on offer ends before it: the forced install is armed,
  // so that business hours hold, and the prompt comes back in its hard form.
  void deferUpdates(bool fromDialogTimeout);
  void dialogTimeoutElapsed();
  // Whether the dialog must stay hidden: a focus deferral was recorded, or the check waits to be repeated.
  bool applyAutomaticFocusDeferralIfNeeded();

  // One event a label, all of one moment. An event that cannot be written costs a warning and nothing else.
  void recordDeferralEvents(const Labels& labels, DeferralEventType type, std::optional<std::int64_t> minutes,
                            std::optional<DeferralEscalation> escalation);
  void setHardDeadlineDate(std::optional<Date> date);
  // No deadline and no escalation: the cycle was completed.
  void settleDeadline();
  void setSelectedDeferralMinutes(std::int64_t minutes);

  [[nodiscard]] std::vector<std::int64_t> availableDeferralOptions() const;
  [[nodiscard]] std::int64_t promptCountdownSeconds() const;
  [[nodiscard]] std::optional<std::string> hardDeadlineExplanation() const;
  [[nodiscard]] std::optional<std::string> deferralsRemainingSummary() const;
  [[nodiscard]] std::vector<DeferralPromptApp> deferralPromptApps() const;

 private:
  [[nodiscard]] DeferralManager manager() const;
  void tellTimedOut();
  void showWhereItBelongs();
  void refuse(HardPromptReason reason);

  RoomContext c_;
  DeferralFields& fields_;
  Lifeline lifeline_;
};

}  // namespace corvane
