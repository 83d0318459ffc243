// Who is logged in at the machine's own screen, by the list that login programs keep.
#pragma once

#include <filesystem>

#include "platform/console_session.h"

namespace corvane {

// Reads the list at each question: a handful of records. Logins of consoles and of displays of this machine count, each
// as long as its process lives; terminal windows and logins from other machines do not. Absent without a list.
class UtmpConsoleSessions final : public ConsoleSessions {
 public:
  explicit UtmpConsoleSessions(std::filesystem::path list = "/var/run/utmp") : list_(std::move(list)) {}
  [[nodiscard]] std::optional<std::vector<ConsoleSession>> sessions() const override;

 private:
  std::filesystem::path list_;
};

}  // namespace corvane
