#include "helper/console_user.h"

#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>

#include "base/atomic_file.h"

namespace corvane {
namespace {

constexpr const char* kFirstSeat = "/run/systemd/seats/seat0";
constexpr const char* kSessions = "/run/systemd/sessions";
constexpr std::size_t kSeatRecordLimit = 64U << 10U;

std::optional<std::string_view> valueIn(std::string_view record, std::string_view key) {
  while (!record.empty()) {
    const auto line = record.substr(0, record.find('\n'));
    record.remove_prefix(std::min(record.size(), line.size() + 1));
    if (line.starts_with(key)) return line.substr(key.size());
  }
  return std::nullopt;
}

ConsoleUser fromAccount(const passwd& account) { return {.uid = account.pw_uid, .home = account.pw_dir}; }

}  // namespace

std::optional<uid_t> activeUserOfSeat(std::string_view seat) {
  const auto digits = valueIn(seat, "ACTIVE_UID=");
  if (!digits) return std::nullopt;
  uid_t uid = 0;
  const auto [end, error] = std::from_chars(digits->data(), digits->data() + digits->size(), uid);
  return error == std::errc{} && end == digits->data() + digits->size() ? std::optional(uid) : std::nullopt;
}

std::optional<std::string> activeSessionOfSeat(std::string_view seat) {
  const auto name = valueIn(seat, "ACTIVE=");
  const auto plain = [](unsigned char c) { return std::isalnum(c) != 0; };
  if (!name || name->empty() || !std::ranges::all_of(*name, plain)) return std::nullopt;
  return std::string(*name);
}

bool isPersonsSession(std::string_view session) {
  const auto kind = valueIn(session, "CLASS=");
  return kind && kind->starts_with("user");
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

std::optional<uid_t> ConsoleUserSource::currentUid() const {
  if (fixed_) return fixed_->uid;
  const auto seat = readFile(kFirstSeat, kSeatRecordLimit);
  const auto name = seat ? activeSessionOfSeat(*seat) : std::nullopt;
  if (!name) return std::nullopt;
  const auto session = readFile(std::filesystem::path(kSessions) / *name, kSeatRecordLimit);
  return session && isPersonsSession(*session) ? activeUserOfSeat(*seat) : std::nullopt;
}

std::optional<ConsoleUser> ConsoleUserSource::current() const {
  if (fixed_) return fixed_;
  const auto uid = currentUid();
  const auto* account = uid ? getpwuid(*uid) : nullptr;
  if (!account) return std::nullopt;
  return fromAccount(*account);
}

}  // namespace corvane
