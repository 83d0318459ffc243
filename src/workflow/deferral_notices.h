// What the user hears of updates outside the windows. How it is said, and by which road, is told behind this
// interface.
#pragma once

#include <cstdint>

#include "base/date.h"
#include "base/task.h"
#include "core/records/updates_available.h"

namespace corvane {

// Main thread.
class DeferralNotices {
 public:
  virtual ~DeferralNotices() = default;

  // Tells of a rise only. Outside of a complete cycle it leaves a stored count of notified updates that is not below
  // `open`, whether or not anything was shown: the dialog comes once for each rise of it.
  virtual void notifyUpdatesAvailable(const UpdatesAvailable& updates) = 0;

  // Takes delivered notifications of updates away; `done` runs on the main queue once they are gone.
  virtual void dismissUpdateNotifications(Task done) = 0;

  // A prompt was not answered and has deferred by itself. Of `total` updates `open` are of open applications;
  // `closedAppsHandledElsewhere`: the closed ones are patched without the user.
  virtual void notifyDialogTimeoutDeferred(std::int64_t open, std::int64_t total, bool closedAppsHandledElsewhere) = 0;

  // "Your deferral has ended", with `pending` updates.
  virtual void notifyDeferralEnded(std::int64_t pending) = 0;

  // The reminders of a forced install that wait to be shown.
  virtual void scheduleReminders(Date enforcement, std::int64_t pending) = 0;
  virtual void cancelReminders() = 0;
};

}  // namespace corvane
