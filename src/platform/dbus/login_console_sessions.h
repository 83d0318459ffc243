// Who is logged in at the machine's own screen, as the login manager tells it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/lifeline.h"
#include "platform/console_session.h"
#include "platform/dbus/bus_name_watch.h"

namespace corvane {

// Answers from memory, which the manager's signals keep current; absent until the manager has told of every session.
// By `otherwise`, which outlives this, where there is no manager, and where it gives no list. Starts no service.
class LoginConsoleSessions final : public ConsoleSessions {
 public:
  LoginConsoleSessions(BusLink& system, const ConsoleSessions& otherwise);

  [[nodiscard]] std::optional<std::vector<ConsoleSession>> sessions() const override;

 private:
  void look();
  void lookAt(const std::string& identifier, const std::string& path);
  void told(const std::string& identifier, std::optional<ConsoleSession> session);

  BusLink& system_;
  const ConsoleSessions& otherwise_;
  // By the manager's identifiers.
  std::map<std::string, ConsoleSession> told_;  // those at the screen
  std::set<std::string> untold_;                // of the list, whose properties are on their way
  bool listed_ = false;
  bool failed_ = false;
  std::uint64_t looks_ = 0;
  Lease began_;
  Lease ended_;
  BusNameWatch manager_;
  Lifeline lifeline_;
};

}  // namespace corvane
