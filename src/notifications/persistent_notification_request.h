// All that the application says to the notifier: one record on its command line. Its form is fixed, so it carries no
// version.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/date.h"
#include "base/error.h"

namespace corvane {

struct PersistentNotificationRequest {
  enum class Operation {
    post,            // shows or schedules one notification
    cancel,          // removes those of `identifiers`, pending and delivered
    clearDelivered,  // removes all that are delivered
    clearAll         // removes all, pending and delivered
  };

  // In the order of the record.
  Operation operation = Operation::post;
  std::vector<std::string> identifiers;  // of `cancel`
  std::optional<std::string> identifier;
  std::optional<std::string> title;
  std::optional<std::string> body;
  bool sound = false;
  std::optional<std::string> categoryIdentifier;
  std::map<std::string, std::string> userInfo;  // comes back with a click
  std::optional<Date> fireDate;                 // absent: now
  std::optional<std::string> displayHeader;     // a line above the title
  std::optional<std::string> openActionTitle;   // of the button that opens the application

  // One JSON object in base64, as a single argument. What is absent is left out; the fire date is a number, the
  // seconds since 2001.
  [[nodiscard]] std::string encoded() const;

  // Fails, with a text that says where, for what is no base64, no JSON, or no record: `operation`, `identifiers`,
  // `sound` and `userInfo` must be there. Unknown fields are passed over.
  [[nodiscard]] static Result<PersistentNotificationRequest> decode(std::string_view base64Text);

  friend bool operator==(const PersistentNotificationRequest&, const PersistentNotificationRequest&) = default;
};

}  // namespace corvane
