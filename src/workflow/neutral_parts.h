// The parts of a program that has no notifications and no signals: each is silent, and nothing that the workflow
// promises depends on it.
#pragma once

#include "core/preferences/preference_manager.h"
#include "core/records/usage_signals.h"
#include "workflow/deferral_notices.h"
#include "workflow/self_update_display.h"

namespace corvane {

struct NeutralParts {
  explicit NeutralParts(PreferenceManager& preferences) : notices(preferences) {}

  struct Notices final : DeferralNotices {
    explicit Notices(PreferenceManager& preferences) : preferences(preferences) {}
    PreferenceManager& preferences;

    // Keeps count as one that tells would.
    void notifyUpdatesAvailable(const UpdatesAvailable& updates) override {
      const auto known = preferences.readLastNotifiedPendingUpdatesCount();
      if (updates.open > known || (updates.open == 0 && known != 0))
        preferences.writeLastNotifiedPendingUpdatesCount(updates.open);
    }
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
