// Who is logged in at the machine's own screen. Remote sessions are none of these.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/date.h"

namespace corvane {

struct ConsoleSession {
  std::string user;                // short name
  std::optional<Date> loggedInAt;  // absent while it is not known yet
  friend bool operator==(const ConsoleSession&, const ConsoleSession&) = default;
};

// Main thread; answered at once from what is known.
class ConsoleSessions {
 public:
  virtual ~ConsoleSessions() = default;

  // Absent while nothing is known yet; empty when nobody is logged in.
  [[nodiscard]] virtual std::optional<std::vector<ConsoleSession>> sessions() const = 0;
};

}  // namespace corvane
