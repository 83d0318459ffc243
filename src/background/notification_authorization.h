// Asks once that background work may notify: for all it uses, or for the badge that an earlier grant left out.
#pragma once

#include "core/logging/logging_service.h"
#include "platform/user_notifications.h"

namespace corvane {

// Main thread. Answers come in later turns and are only logged, under the name of the logger.
void authorizeNotifications(UserNotifications& center, const Logger& log);

}  // namespace corvane
