// What those who have news say of a notification. The router words it with the organisation's title and finds its way.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/date.h"
#include "base/localizable.h"
#include "core/records/enumerations.h"

namespace corvane {

// The one category, its one action, and what a click on either carries back.
struct DeferralPromptLink {
  static constexpr std::string_view category = "crv.updatesAvailable.category";
  static constexpr std::string_view action = "crv.openDeferralPrompt";
  static constexpr std::string_view intentKey = "intent";
  static constexpr std::string_view intent = "showDeferralPrompt";
};

// Title of the action, before the display title takes the place of the program's name.
constexpr std::string_view kOpenActionTitle = toLocalize("Open Corvane");

// Texts are in the user's language and still say "Corvane".
struct NotificationContent {
  CRVNotificationType type = CRVNotificationType::updatesAvailable;
  std::string identifier;  // a later one replaces an earlier one
  std::string title;
  std::string body;
  bool sound = false;
  bool showsDeferralPrompt = false;  // has the category, and a click leads to the prompt
  std::optional<Date> fireDate;      // absent: at once
};

}  // namespace corvane
