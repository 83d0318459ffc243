// A notification in the words of the desktops' notification services.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "platform/user_notifications.h"

namespace corvane {

// By this name the desktop knows the application: its icon, its settings, its place in the list of senders.
inline constexpr const char* kDesktopEntry = "org.corvane.Corvane";

// The key under which a service tells that the notification itself was chosen.
inline constexpr const char* kDefaultAction = "default";

// The arguments of Notify, but for the identifier and the time.
struct NotificationWords {
  using Hint = std::variant<bool, std::uint8_t, std::string>;

  std::string application;  // services show it above the title, so it is the header
  std::string icon;
  std::string summary;
  std::string body;
  std::vector<std::string> actions;  // keys and titles in turn
  std::map<std::string, Hint> hints;
};

// `capabilities` are the service's own words of what it can do. Every text is one that a bus takes.
[[nodiscard]] NotificationWords notificationWords(const UserNotification& notification, bool sound,
                                                  const std::vector<NotificationAction>& actions,
                                                  const std::set<std::string>& capabilities);

}  // namespace corvane
