// Who sits at the machine, as far as the helper must know: whose preferences count and who may ask.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"
#include "helper/helper_options.h"

namespace corvane {

struct ConsoleUser {
  uid_t uid = 0;
  std::filesystem::path home;
  friend bool operator==(const ConsoleUser&, const ConsoleUser&) = default;
};

// The user who is active on the first seat, from the session manager's own record; absent when nobody is.
// `seat` is the text of that record ("ACTIVE_UID=1000" among its lines).
[[nodiscard]] std::optional<uid_t> activeUserOfSeat(std::string_view seat);

// The name of the session that the seat shows ("ACTIVE=c1"); absent for none and for what is no plain name.
[[nodiscard]] std::optional<std::string> activeSessionOfSeat(std::string_view seat);

// Whether the session, by its record, is a person's ("CLASS=user" and its kin), not that of a login or lock screen.
[[nodiscard]] bool isPersonsSession(std::string_view session);

// Tells the console user at each call anew: people log in and out while the helper runs.
class ConsoleUserSource {
 public:
  // Fails when the user named on the command line has no account. A helper that does not run as root serves the
  // user it runs as.
  [[nodiscard]] static Result<ConsoleUserSource> create(const HelperOptions& options);

  [[nodiscard]] std::optional<ConsoleUser> current() const;
  // Without a look into the accounts, which may lie on a directory server.
  [[nodiscard]] std::optional<uid_t> currentUid() const;

 private:
  explicit ConsoleUserSource(std::optional<ConsoleUser> fixed) : fixed_(std::move(fixed)) {}
  std::optional<ConsoleUser> fixed_;
};

// Who may ask: root, the console user, and the account that the helper itself runs as.
[[nodiscard]] constexpr bool mayAsk(uid_t peer, uid_t ownUid, std::optional<uid_t> consoleUid) {
  return peer == 0 || peer == ownUid || (consoleUid && peer == *consoleUid);
}

}  // namespace corvane
