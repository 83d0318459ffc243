#include "helper/console_user.h"

#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

#include <charconv>

#include "base/atomic_file.h"

namespace corvane {
namespace {

constexpr const char* kFirstSeat = "/run/systemd/seats/seat0";
constexpr std::size_t kSeatRecordLimit = 64U << 10U;

ConsoleUser fromAccount(const passwd& account) { return {.uid = account.pw_uid, .home = account.pw_dir}; }

}  // namespace

std::optional<uid_t> activeUserOfSeat(std::string_view seat) {
  constexpr std::string_view key = "ACTIVE_UID=";
  while (!seat.empty()) {
    const auto line = seat.substr(0, seat.find('\n'));
    seat.remove_prefix(std::min(seat.size(), line.size() + 1));
    if (!line.starts_with(key)) continue;
    const auto digits = line.substr(key.size());
    uid_t uid = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), uid);
    if (error == std::errc{} && end == digits.data() + digits.size()) return uid;
  }
  return std::nullopt;
}

Result<ConsoleUserSource> ConsoleUserSource::create(const HelperOptions& options) {
  const bool named = options.user.has_value();
  if (!named && geteuid() == 0 && !options.userHome) return ConsoleUserSource(std::nullopt);
  const auto* account = named ? getpwnam(options.user->c_str()) : getpwuid(geteuid());
  if (!account && named) return failure("CRVHelperOptions", 2, fmt::format("there is no user named {}", *options.user));
  ConsoleUser user = account ? fromAccount(*account) : ConsoleUser{.uid = geteuid(), .home = "/"};
  if (options.userHome) user.home = *options.userHome;
  return ConsoleUserSource(std::move(user));
}

std::optional<ConsoleUser> ConsoleUserSource::current() const {
  if (fixed_) return fixed_;
  const auto seat = readFile(kFirstSeat, kSeatRecordLimit);
  const auto uid = seat ? activeUserOfSeat(*seat) : std::nullopt;
  const auto* account = uid ? getpwuid(*uid) : nullptr;
  if (!account) return std::nullopt;
  return fromAccount(*account);
}

}  // namespace corvane
