#include "platform/posix/system_accounts.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>

#include "base/atomic_file.h"

namespace corvane {
namespace {

constexpr std::size_t kUserFoldersLimit = 64U << 10U;

// XDG_DESKTOP_DIR="$HOME/Desktop", where only $HOME and absolute paths are allowed.
std::optional<std::filesystem::path> namedDesktop(std::string_view text, const std::filesystem::path& home) {
  constexpr std::string_view kKey = "XDG_DESKTOP_DIR=\"";
  constexpr std::string_view kHome = "$HOME/";
  while (!text.empty()) {
    auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (!line.starts_with(kKey)) continue;
    line.remove_prefix(kKey.size());
    line = line.substr(0, line.find('"'));
    if (line.starts_with(kHome)) return home / line.substr(kHome.size());
    if (line.starts_with('/')) return line;
  }
  return std::nullopt;
}

}  // namespace

bool SystemAccounts::isRoot() const { return ::getuid() == 0; }

std::optional<std::filesystem::path> SystemAccounts::homeOf(std::string_view user) const {
  if (user == userName_) return home_;
  const passwd* account = ::getpwnam(std::string(user).c_str());
  if (account == nullptr || account->pw_dir == nullptr || *account->pw_dir == '\0') return std::nullopt;
  return account->pw_dir;
}

std::optional<std::filesystem::path> SystemAccounts::desktop() const {
  const auto folders = readFile(home_ / ".config/user-dirs.dirs", kUserFoldersLimit);
  const auto named = folders ? namedDesktop(*folders, home_) : std::nullopt;
  auto desktop = named.value_or(home_ / "Desktop");
  std::error_code ignored;
  return std::filesystem::is_directory(desktop, ignored) ? std::optional(std::move(desktop)) : std::nullopt;
}

}  // namespace corvane
