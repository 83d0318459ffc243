// Where the sequence of side effects stands, and which of its entries fresh counts or a failed refresh lead to.
// The steps themselves stand behind PendingUpdateSideEffects.
#pragma once

#include "workflow/room_context.h"

namespace corvane {

class SideEffectSequence {
 public:
  SideEffectSequence(const RoomContext& context, SideEffectFields& fields) : c_(context), fields_(fields) {}

  void pendingUpdatesCounted();
  // The refresh behind a pass over closed applications has failed: the deferral is delivered all the same.
  void refreshFailed();
  void forgetStagedLabels();
  void forgetClosedAppsAttempt() { fields_.closedAppsAttemptedBeforeDeferral.reset(); }

 private:
  void deliverNow(std::string_view reason);

  RoomContext c_;
  SideEffectFields& fields_;
};

}  // namespace corvane
