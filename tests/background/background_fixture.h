// The background objects over a whole workflow on virtual time.
#pragma once

#include "background/background_services.h"
#include "platform/scripted/scripted_child_processes.h"
#include "platform/scripted/scripted_http_client.h"
#include "platform/scripted/scripted_user_notifications.h"
#include "workflow/workflow_fixture.h"

namespace corvane {

struct BackgroundTest : WorkflowTest {
  // A setting as an organisation's profile sets it, which holds for every key.
  void set(const char* key, PlistValue value) {
    managed_.insert_or_assign(key, std::move(value));
    domains.setManaged(managed_);
  }
  void writeState(const HelperPatchState& state) { ASSERT_TRUE(helperState.write(state)); }
  [[nodiscard]] std::vector<std::string> told() const {
    std::vector<std::string> all;
    for (const auto& notification : center.added) all.push_back(notification.identifier + ": " + notification.body);
    return all;
  }

  HelperBackgroundPatchStateStore helperState{places.helperState(), files, log};
  ScriptedUserNotifications center{time.main()};
  ScriptedChild noChild;
  ScriptedChildProcesses children{time.main(), [this](const ChildSpec&) { return noChild; }};
  CRVNotificationRouter router{{.service = center,
                                .children = children,
                                .main = time.main(),
                                .clock = time.clock(),
                                .bundle = bundle,
                                .log = log,
                                .environment = {}}};
  ScriptedNetworkProbe network{time.main()};
  ScriptedConsoleSessions console;
  ScriptedHttpClient http{time.main()};
  BackgroundServices background{services, helperState, router, center, network, console, http, bundle, "ada"};
  Lease heartbeat = time.main().every(15s, [this] { setHelperAlive(true); });

 private:
  PlistDict managed_;
};

}  // namespace corvane
