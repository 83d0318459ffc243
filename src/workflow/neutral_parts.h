// The parts of a program that has no notifications, no scheduler and no signals: each is silent, and nothing
// that the workflow promises depends on it.
#pragma once

#include "core/records/usage_signals.h"
#include "workflow/deferral_notices.h"
#include "workflow/pending_update_side_effects.h"
#include "workflow/self_update_display.h"

namespace corvane {

struct NeutralParts {
  struct SideEffects final : PendingUpdateSideEffects {
    void runPendingUpdateSideEffects() override {}
    void deliverDeferral(bool, bool) override {}
  } sideEffects;
  struct Notices final : DeferralNotices {
    void dismissUpdateNotifications(Task done) override {
      if (done) done();
    }
    void notifyDialogTimeoutDeferred(std::int64_t, std::int64_t, bool) override {}
    void notifyDeferralEnded(std::int64_t) override {}
    void scheduleReminders(Date, std::int64_t) override {}
    void cancelReminders() override {}
  } notices;
  struct Signals final : UsageSignals {
    void send(const UsageSignal&) override {}
  } signals;
  struct Display final : SelfUpdateDisplay {
    void lookUp(const Apps&) override {}
  } selfUpdateDisplay;
};

}  // namespace corvane
