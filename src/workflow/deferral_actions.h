// The state of the deferral prompt and the record of what was deferred and started.
#pragma once

#include "workflow/room_context.h"

namespace corvane {

class DeferralActions {
 public:
  DeferralActions(const RoomContext& context, DeferralFields& fields);

  // The stored hard date, for display.
  void load();
  void dismissDeferralPrompt();
  // One event a label, all of one moment. An event that cannot be written costs a warning and nothing else.
  void recordDeferralEvents(const Labels& labels, DeferralEventType type, std::optional<std::int64_t> minutes,
                            std::optional<DeferralEscalation> escalation);
  void setHardDeadlineDate(std::optional<Date> date);
  // No deadline and no escalation: the cycle was completed.
  void settleDeadline();
  void setSelectedDeferralMinutes(std::int64_t minutes);

 private:
  RoomContext c_;
  DeferralFields& fields_;
};

}  // namespace corvane
