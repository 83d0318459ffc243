// The notifier's command line: one request, and how a click reaches the application.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/error.h"
#include "notifications/persistent_notification_request.h"

namespace corvane {

struct NotifierOptions {
  static constexpr const char* errorDomain = "CRVNotifierOptions";
  static constexpr int wrongUsage = 1;
  static constexpr int badRequest = 2;

  std::string encodedRequest;  // as it came, for whoever else is to act on it
  PersistentNotificationRequest request;

  // `arguments` without the program's name. Wrong usage fails with the usage line.
  [[nodiscard]] static Result<NotifierOptions> parse(std::span<const char* const> arguments);
};

// What the application is started with after a click.
[[nodiscard]] std::vector<std::string> applicationArguments(const std::map<std::string, std::string>& userInfo);

}  // namespace corvane
