// What the background work uses beside the model: references to the one instance of each, which outlive it.
#pragma once

#include <string>

#include "core/history/helper_state_stores.h"
#include "notifications/crv_notification_router.h"
#include "platform/console_session.h"
#include "platform/http_client.h"
#include "platform/network_probe.h"
#include "platform/own_bundle.h"
#include "platform/user_notifications.h"
#include "workflow/workflow_services.h"

namespace corvane {

struct BackgroundServices {
  WorkflowServices workflow;
  HelperBackgroundPatchStateStore& helperState;
  CRVNotificationRouter& router;
  UserNotifications& center;
  NetworkProbe& network;
  ConsoleSessions& console;
  HttpClient& http;
  OwnBundle& bundle;
  std::string userName;
};

}  // namespace corvane
