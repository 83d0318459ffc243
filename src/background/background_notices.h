// What the background work tells the user: silent notifications that are shown at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/records/helper_records.h"
#include "notifications/notification_content.h"

namespace corvane {

// A pass of this process over closed applications begins; `names` are theirs, at least one.
[[nodiscard]] NotificationContent passStartedNotice(const std::vector<std::string>& names, const std::string& id);
// It ended; absent when it succeeded with nothing installed. `problem` is why it failed, and may be empty.
[[nodiscard]] std::optional<NotificationContent> passEndedNotice(bool success, const std::string& problem,
                                                                 std::int64_t installed, const std::string& id);

// The same of the helper's own passes; absent when there is nothing to tell.
[[nodiscard]] std::optional<NotificationContent> helperPassStartedNotice(const HelperBackgroundCurrentRun& run);
[[nodiscard]] std::optional<NotificationContent> helperPassEndedNotice(const BackgroundPatchSummary& summary);

// A newer version of the program, `version` as its label tells it.
[[nodiscard]] NotificationContent selfUpdateNotice(const SelfUpdateAvailability& update, const std::string& version);

}  // namespace corvane
