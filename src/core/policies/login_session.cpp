#include "core/policies/login_session.h"

#include <algorithm>

namespace corvane {

std::optional<Date> LoginSession::consoleLoginTime(std::string_view user, std::span<const LoginSession> sessions) {
  std::optional<Date> latest;
  for (const auto& session : sessions)
    if (session.atConsole && session.user == user) latest = std::max(latest, std::optional(session.loggedInAt));
  return latest;
}

}  // namespace corvane
