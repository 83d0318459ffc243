#include "notifier/notifier_options.h"

#include <utility>

#include "notifications/notification_content.h"
#include "notifier/notifier.h"

namespace corvane {

Result<NotifierOptions> NotifierOptions::parse(std::span<const char* const> arguments) {
  if (arguments.size() != 2 || std::string_view(arguments[0]) != "--request")
    return failure(errorDomain, wrongUsage, "usage: \"Corvane Notification\" --request <base64>");
  auto request = PersistentNotificationRequest::decode(arguments[1]);
  if (!request) return failure(errorDomain, badRequest, request.error().text);
  if (const auto showable = checkShowable(*request); !showable)
    return failure(errorDomain, badRequest, showable.error().text);
  return NotifierOptions{.encodedRequest = arguments[1], .request = std::move(*request)};
}

std::vector<std::string> applicationArguments(const std::map<std::string, std::string>& userInfo) {
  const auto intent = userInfo.find(std::string(DeferralPromptLink::intentKey));
  if (intent == userInfo.end() || intent->second != DeferralPromptLink::intent) return {};
  return {"corvane://show-deferral-prompt"};
}

}  // namespace corvane
