#include "notifications/updates_available_notifier.h"

#include <algorithm>
#include <string>

#include "base/localized.h"
#include "core/policies/patching_cadence_manager.h"

namespace corvane {

namespace {

constexpr const char* kOpenApps = "crv.updatesAvailable";
constexpr const char* kACPower = "crv.acPowerRequired";

std::string counted(std::int64_t count, std::string_view one, std::string_view many) {
  return count == 1 ? localized(one) : localized(many, count);
}

std::string toastTitle(std::int64_t open) {
  return counted(open, toLocalize("Corvane: 1 open app needs updating"),
                 toLocalize("Corvane: {} open apps need updating"));
}

std::string toastBody(const UpdatesAvailable& news) {
  const auto closed = news.total - news.open;
  const bool oneOpen = news.open == 1;
  if (closed < 1)
    return localized(oneOpen ? toLocalize("Quit the app or open Corvane to update now.")
                             : toLocalize("Quit the apps or open Corvane to update now."));
  if (!news.closedAppsHandledElsewhere)
    return counted(closed, toLocalize("1 closed app also needs updating. Open Corvane to update now."),
                   toLocalize("{} closed apps also need updating. Open Corvane to update now."));
  if (oneOpen)
    return counted(
        closed,
        toLocalize("1 closed app is being updated in the background. Quit the open app or open Corvane to update now."),
        toLocalize(
            "{} closed apps are being updated in the background. Quit the open app or open Corvane to update now."));
  return counted(
      closed,
      toLocalize("1 closed app is being updated in the background. Quit the open apps or open Corvane to update now."),
      toLocalize(
          "{} closed apps are being updated in the background. Quit the open apps or open Corvane to update now."));
}

}  // namespace

void UpdatesAvailableNotifier::notify(const UpdatesAvailable& news) {
  const auto config = s_.preferences.loadConfiguration();
  if (PatchingCadenceManager(config, s_.locale.calendar())
          .isPatchingCompleteForCurrentCycle(s_.preferences.readPatchingCadenceState(), s_.clock.now()))
    return;
  const auto closed = news.total - news.open;
  tellOfACPower(news.closedAppsWaitForACPower ? std::max<std::int64_t>(closed, 0) : 0, config);
  tellOfOpenApps(news, config);
}

void UpdatesAvailableNotifier::tellOfACPower(std::int64_t waiting, const CorvaneConfiguration& config) {
  if (s_.preferences.readLastNotifiedACPowerRequiredCount() == waiting) return;
  s_.preferences.writeLastNotifiedACPowerRequiredCount(waiting);
  if (waiting == 0) return s_.router.cancel(CRVNotificationType::acPowerRequired, {kACPower});
  s_.router.post(
      {.type = CRVNotificationType::acPowerRequired,
       .identifier = kACPower,
       .title = localized("App updates are waiting"),
       .body = counted(waiting, toLocalize("Connect this Mac to AC power to continue. 1 closed app update is pending."),
                       toLocalize("Connect this Mac to AC power to continue. {} closed app updates are pending.")),
       .sound = true},
      config, warningOnFailure(log_, "Failed to deliver toast"));
}

void UpdatesAvailableNotifier::tellOfOpenApps(const UpdatesAvailable& news, const CorvaneConfiguration& config) {
  const auto told = s_.preferences.readLastNotifiedPendingUpdatesCount();
  if (news.open == 0) {
    if (told == 0) return;
    s_.preferences.writeLastNotifiedPendingUpdatesCount(0);
    return s_.router.cancel(CRVNotificationType::updatesAvailable, {kOpenApps});
  }
  if (told >= news.open) return;
  s_.preferences.writeLastNotifiedPendingUpdatesCount(news.open);
  if (config.updatesAvailableNotificationsEnabled && !s_.application.isActive()) deliverToast(news, config);
}

void UpdatesAvailableNotifier::notifyDialogTimeoutDeferred(std::int64_t open, std::int64_t total,
                                                           bool closedAppsHandledElsewhere) {
  if (open < 1) return;
  const auto config = s_.preferences.loadConfiguration();
  if (!config->updatesAvailableNotificationsEnabled)
    return log_.info("Dialog timeout deferred updates, but UpdatesAvailableNotificationsEnabled is off.");
  deliverToast({.open = open, .total = total, .closedAppsHandledElsewhere = closedAppsHandledElsewhere}, config);
}

void UpdatesAvailableNotifier::deliverToast(const UpdatesAvailable& news, const CorvaneConfiguration& config) {
  s_.router.post({.type = CRVNotificationType::updatesAvailable,
                  .identifier = kOpenApps,
                  .title = toastTitle(news.open),
                  .body = toastBody(news),
                  .sound = true,
                  .showsDeferralPrompt = true},
                 config, warningOnFailure(log_, "Failed to deliver toast"));
}

}  // namespace corvane
