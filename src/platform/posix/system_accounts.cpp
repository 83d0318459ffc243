#include "platform/posix/system_accounts.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>

#include "base/ascii.h"
#include "base/atomic_file.h"

namespace corvane {
namespace {

constexpr std::size_t kUserFoldersLimit = 64U << 10U;

// What stands between the quotes, where a backslash takes the next character as it is; absent where they are not
// closed.
std::optional<std::string> unquoted(std::string_view text) {
  std::string value;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') return value;
    if (text[i] == '\\' && ++i == text.size()) break;
    value += text[i];
  }
  return std::nullopt;
}

// XDG_DESKTOP_DIR="$HOME/Desktop", where only $HOME and absolute paths are allowed. Of several lines the last counts,
// as for a shell.
std::optional<std::filesystem::path> namedDesktop(std::string_view text, const std::filesystem::path& home) {
  constexpr std::string_view kKey = "XDG_DESKTOP_DIR=\"";
  constexpr std::string_view kHome = "$HOME/";
  std::optional<std::filesystem::path> named;
  while (!text.empty()) {
    auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    line = trimmed(line);
    if (!line.starts_with(kKey)) continue;
    const auto value = unquoted(line.substr(kKey.size()));
    if (!value) continue;
    if (value->starts_with(kHome)) {
      // Behind further slashes it would count as absolute.
      const auto below = std::min(value->find_first_not_of('/', kHome.size()), value->size());
      named = home / value->substr(below);
    } else if (value->starts_with('/')) {
      named = *value;
    }
  }
  return named;
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
