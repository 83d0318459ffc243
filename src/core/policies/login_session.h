// When the user's session at the machine's own screen began.
#pragma once

#include <optional>
#include <string_view>

#include "base/date.h"
#include "platform/console_session.h"

namespace corvane {

struct LoginSession {
  // The login time of the user's console session, the latest when there are several. Absent without one, and while
  // the sessions or their times are not known yet. Main thread.
  [[nodiscard]] static std::optional<Date> consoleLoginTime(std::string_view user, const ConsoleSessions& console);
};

}  // namespace corvane
