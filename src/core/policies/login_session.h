// Sessions at the machine's own screen, as values; a port tells of them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/date.h"

namespace corvane {

struct LoginSession {
  std::string user;
  Date loggedInAt{};
  bool atConsole = false;

  // When the user's console session began; the latest when there are several. Absent without one.
  [[nodiscard]] static std::optional<Date> consoleLoginTime(std::string_view user,
                                                            std::span<const LoginSession> sessions);
};

}  // namespace corvane
