#include "notifications/crv_notification_delegate.h"

#include <string>

#include "base/localized.h"
#include "core/preferences/display_title.h"
#include "core/records/notifications.h"
#include "notifications/notification_content.h"

namespace corvane {

namespace {

bool wantsDeferralPrompt(const NotificationResponse& response) {
  const auto intent = response.userInfo.find(std::string(DeferralPromptLink::intentKey));
  return intent != response.userInfo.end() && intent->second == DeferralPromptLink::intent;
}

}  // namespace

CRVNotificationDelegate::CRVNotificationDelegate(UserNotifications& service, NotificationCenter& notifications,
                                                 MainQueue& main, const CorvaneConfiguration& config)
    : service_(service), notifications_(notifications), main_(main) {
  service_.setDelegate(this);
  const NotificationAction open{.identifier = std::string(DeferralPromptLink::action),
                                .title = AppDisplayTitle(config).userFacing(localized(kOpenActionTitle))};
  service_.setCategories({{.identifier = std::string(DeferralPromptLink::category), .actions = {open}}});
}

CRVNotificationDelegate::~CRVNotificationDelegate() { service_.setDelegate(nullptr); }

NotificationPresentationOptions CRVNotificationDelegate::willPresent(const UserNotification&) {
  return {.banner = true, .sound = true};
}

void CRVNotificationDelegate::didReceive(const NotificationResponse& response, Task done) {
  if (wantsDeferralPrompt(response))
    main_.post([&center = notifications_] { center.post(ShowDeferralPromptFromNotification{}); });
  if (done) done();
}

}  // namespace corvane
