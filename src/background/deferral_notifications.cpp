#include "background/deferral_notifications.h"

#include <utility>

#include "base/localized.h"

namespace corvane {

namespace {

std::string deferralEndedBody(std::int64_t pending) {
  if (pending == 1) return localized("1 update is waiting. Open Corvane to install now or defer again.");
  if (pending < 1) return localized("Open Corvane to install now or defer again.");
  return localized("{} updates are waiting. Open Corvane to install now or defer again.", pending);
}

}  // namespace

DeferralNotifications::DeferralNotifications(Services services)
    : s_(services),
      reminders_(s_.router, s_.preferences, s_.log),
      updates_({.router = s_.router,
                .preferences = s_.preferences,
                .application = s_.application,
                .clock = s_.clock,
                .locale = s_.locale,
                .log = s_.log}) {}

void DeferralNotifications::dismissUpdateNotifications(Task done) {
  if (done)
    s_.router.clearDelivered(std::move(done));
  else
    s_.router.clearDelivered();
}

void DeferralNotifications::notifyDialogTimeoutDeferred(std::int64_t open, std::int64_t total,
                                                        bool closedAppsHandledElsewhere) {
  updates_.notifyDialogTimeoutDeferred(open, total, closedAppsHandledElsewhere);
}

void DeferralNotifications::notifyDeferralEnded(std::int64_t pending) {
  s_.router.post({.type = CRVNotificationType::deferralResuming,
                  .identifier = "deferral-resuming-" + s_.entropy.uuid().text(),
                  .title = localized("Your deferral has ended"),
                  .body = deferralEndedBody(pending),
                  .sound = true,
                  .showsDeferralPrompt = true},
                 s_.preferences.loadConfiguration(),
                 // The watcher's name, under which the ended deferral stands in the log.
                 warningOnFailure(Logger(s_.log, "DeferralWatcher"), "Failed to deliver resuming notification"));
}

void DeferralNotifications::scheduleReminders(Date enforcement, std::int64_t pending) {
  reminders_.schedule(HardDeadlineReminderNotifier::reminders(enforcement, s_.clock.now()), enforcement, pending,
                      s_.locale.calendar());
}

void DeferralNotifications::cancelReminders() { reminders_.cancelAll(); }

}  // namespace corvane
