#include "platform/dbus/notification_words.h"

#include <algorithm>
#include <string_view>

#include "base/utf8.h"

namespace corvane {

namespace {

constexpr const char* kName = "Corvane";                   // where no header was given
constexpr const char* kSoundName = "message-new-instant";  // of the desktops' list of sounds
constexpr std::uint8_t kNormalUrgency = 1;

// A bus takes neither torn characters nor zeros.
std::string forBus(std::string_view text) {
  auto valid = validUtf8(text);
  std::erase(valid, '\0');
  return valid;
}

std::string escaped(std::string_view text) {
  std::string markup;
  for (const char letter : text) {
    if (letter == '&')
      markup += "&amp;";
    else if (letter == '<')
      markup += "&lt;";
    else if (letter == '>')
      markup += "&gt;";
    else
      markup += letter;
  }
  return markup;
}

}  // namespace

NotificationWords notificationWords(const UserNotification& notification, bool sound,
                                    const std::vector<NotificationAction>& actions,
                                    const std::set<std::string>& capabilities) {
  NotificationWords words{.application = forBus(notification.header),
                          .icon = kDesktopEntry,
                          .summary = forBus(notification.title),
                          .body = forBus(notification.body)};
  if (words.application.empty()) words.application = kName;
  if (words.summary.empty()) words.summary = words.application;
  if (!capabilities.contains("body")) {
    if (!words.body.empty()) words.summary += ": " + words.body;
    words.body.clear();
  } else if (capabilities.contains("body-markup")) {
    words.body = escaped(words.body);
  }
  if (capabilities.contains("actions")) {
    // Services that list the default one beside the others show its title.
    const auto& title = actions.empty() ? words.application : actions.front().title;
    words.actions = {kDefaultAction, forBus(title)};
    for (const auto& action : actions) {
      words.actions.push_back(forBus(action.identifier));
      words.actions.push_back(forBus(action.title));
    }
  }
  words.hints = {{"desktop-entry", kDesktopEntry}, {"urgency", kNormalUrgency}};
  if (notification.categoryIdentifier) words.hints["category"] = forBus(*notification.categoryIdentifier);
  if (!sound)
    words.hints["suppress-sound"] = true;
  else if (capabilities.contains("sound"))
    words.hints["sound-name"] = kSoundName;
  return words;
}

}  // namespace corvane
