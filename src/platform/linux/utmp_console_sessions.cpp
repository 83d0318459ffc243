#include "platform/linux/utmp_console_sessions.h"

#include <signal.h>
#include <utmpx.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "base/atomic_file.h"

namespace corvane {

namespace {

constexpr std::size_t kListLimit = 4U << 20U;  // ten thousand records

// Fields are padded with zeros, and full ones end without one.
template <std::size_t size>
std::string_view text(const char (&field)[size]) {
  return {field, ::strnlen(field, size)};
}

bool isOwnScreen(std::string_view line) { return line.starts_with("tty") || line.starts_with(':'); }

// Display managers write the display or the console where a remote login has its machine.
bool isRemote(std::string_view host) { return !host.empty() && !isOwnScreen(host); }

bool lives(pid_t process) { return process > 0 && (::kill(process, 0) == 0 || errno != ESRCH); }

}  // namespace

std::optional<std::vector<ConsoleSession>> UtmpConsoleSessions::sessions() const {
  const auto bytes = readFile(list_, kListLimit);
  if (!bytes) return std::nullopt;
  std::vector<ConsoleSession> sessions;
  for (std::size_t at = 0; at + sizeof(utmpx) <= bytes->size(); at += sizeof(utmpx)) {
    utmpx record{};
    std::memcpy(&record, bytes->data() + at, sizeof record);
    if (record.ut_type != USER_PROCESS || !isOwnScreen(text(record.ut_line)) || isRemote(text(record.ut_host)) ||
        text(record.ut_user).empty() || !lives(record.ut_pid))
      continue;
    const auto since = std::chrono::seconds(record.ut_tv.tv_sec) + std::chrono::microseconds(record.ut_tv.tv_usec);
    sessions.push_back({.user = std::string(text(record.ut_user)), .loggedInAt = Date(since)});
  }
  return sessions;
}

}  // namespace corvane
