// A router on virtual time, over a notification service and a notifier that do as they are told.
#pragma once

#include "notifications/crv_notification_router.h"
#include "platform/scripted/scripted_child_processes.h"
#include "platform/scripted/scripted_own_bundle.h"
#include "platform/scripted/scripted_user_notifications.h"
#include "support/scripted_preferences.h"
#include "support/temporary_folder.h"
#include "support/test.h"

namespace corvane::testing {

struct NotificationsTest : ::testing::Test {
  static constexpr const char* kNotifier =
      "Contents/Helpers/Corvane Notification.app/Contents/MacOS/Corvane Notification";

  NotificationsTest() {
    bundle.bundlePath = folder.path();
    installNotifier(std::filesystem::perms::owner_all);
  }

  void installNotifier(std::filesystem::perms permissions) {
    std::filesystem::permissions(folder.write(kNotifier, "#!/bin/sh\n"), permissions);
  }
  void manage(PlistDict values) { world.domains.setManaged(std::move(values)); }
  [[nodiscard]] SharedConfiguration config() const { return world.preferences.loadConfiguration(); }
  [[nodiscard]] VirtualMachine& time() { return world.machine; }

  // What was asked of the notifier, in order; each start's command line must be a request.
  [[nodiscard]] std::vector<PersistentNotificationRequest> requests() const {
    std::vector<PersistentNotificationRequest> all;
    for (const auto& start : children.started()) {
      EXPECT_EQ(start.arguments.size(), 2U);
      EXPECT_EQ(start.arguments.front(), "--request");
      all.push_back(PersistentNotificationRequest::decode(start.arguments.back()).value());
    }
    return all;
  }

  TemporaryFolder folder;
  ScriptedPreferences world;
  ScriptedOwnBundle bundle;
  ScriptedUserNotifications service{world.machine.main()};
  ScriptedChild script;
  ScriptedChildProcesses children{world.machine.main(), [this](const ChildSpec&) { return script; }};
  CRVNotificationRouter router{{.service = service,
                                .children = children,
                                .main = world.machine.main(),
                                .clock = world.machine.clock(),
                                .bundle = bundle,
                                .log = world.log,
                                .environment = {{"HOME", "/home/ada"}, {"DISPLAY", ":0"}}}};
};

}  // namespace corvane::testing
