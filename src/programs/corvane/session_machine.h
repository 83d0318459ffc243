// What the application alone has of its machine: the services of the desktop session and of the system, and the
// network.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/dbus/bus_link.h"
#include "platform/dbus/bus_sole_process.h"
#include "platform/dbus/desktop_notifications.h"
#include "platform/dbus/file_manager_opener.h"
#include "platform/dbus/launcher_entry.h"
#include "platform/dbus/linux_network_probe.h"
#include "platform/dbus/login_console_sessions.h"
#include "platform/dbus/session_focus_state.h"
#include "platform/dbus/upower_source.h"
#include "platform/linux/utmp_console_sessions.h"
#include "platform/net/curl_http_client.h"
#include "platform/uv/uv_child_processes.h"
#include "programs/user/user_machine.h"

namespace corvane {

// By this name on the session bus the one instance is found.
inline constexpr const char* kApplicationName = "org.corvane.Corvane";

struct SessionMachine {
  // The user's machine outlives this.
  explicit SessionMachine(UserMachine& machine);
  ~SessionMachine();
  SessionMachine(const SessionMachine&) = delete;
  SessionMachine& operator=(const SessionMachine&) = delete;

  // The page that tells of a captive portal, asked at each look at the network; with none, nobody tells.
  std::function<std::optional<std::string>()> probeAddress;

  UserMachine& user;
  BusAddresses addresses = BusAddresses::ofEnvironment();
  BusSoleProcess sole;
  BusLink session;
  BusLink system;
  SessionFocusState focus;
  LauncherEntry launcherEntry;
  FileManagerOpener opener;
  UPowerSource power;
  UtmpConsoleSessions utmp;
  LoginConsoleSessions console;
  DesktopNotifications notifications;
  UvChildProcesses children;
  CurlHttpClient http;
  LinuxNetworkProbe network;
};

}  // namespace corvane
