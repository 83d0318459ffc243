#include "core/policies/login_session.h"

#include <algorithm>
#include <vector>

namespace corvane {

std::optional<Date> LoginSession::consoleLoginTime(std::string_view user, const ConsoleSessions& console) {
  std::optional<Date> latest;
  for (const auto& session : console.sessions().value_or(std::vector<ConsoleSession>()))
    if (session.user == user) latest = std::max(latest, session.loggedInAt);
  return latest;
}

}  // namespace corvane
