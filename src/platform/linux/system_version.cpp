#include "platform/linux/system_version.h"

#include <sys/utsname.h>

#include <algorithm>
#include <string_view>

#include "base/atomic_file.h"

namespace corvane {
namespace {

constexpr std::size_t kReleaseLimit = 64U << 10U;

// PRETTY_NAME="Debian GNU/Linux 12 (bookworm)", with quotes or without.
std::string prettyName(std::string_view text) {
  constexpr std::string_view kKey = "PRETTY_NAME=";
  while (!text.empty()) {
    auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (!line.starts_with(kKey)) continue;
    line.remove_prefix(kKey.size());
    if (line.size() >= 2 && line.front() == line.back() && (line.front() == '"' || line.front() == '\''))
      line = line.substr(1, line.size() - 2);
    return std::string(line);
  }
  return {};
}

}  // namespace

std::string systemVersion() {
  const auto text = readFile("/etc/os-release", kReleaseLimit);
  auto name = text ? prettyName(*text) : std::string();
  utsname kernel{};
  if (::uname(&kernel) != 0) return name.empty() ? "unknown" : name;
  if (!name.empty()) name += ", ";
  return name + kernel.sysname + " " + kernel.release;
}

}  // namespace corvane
