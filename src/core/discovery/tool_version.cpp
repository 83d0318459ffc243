#include "core/discovery/tool_version.h"

#include <fmt/format.h>

#include <algorithm>

namespace corvane {
namespace {

// The text of `name="text"` at the start of a line.
std::string assignedText(std::string_view script, std::string_view name) {
  const auto head = fmt::format("{}=\"", name);
  for (std::size_t at = 0; at < script.size();) {
    const auto end = std::min(script.find('\n', at), script.size());
    const auto line = script.substr(at, end - at);
    if (line.starts_with(head)) return std::string(line.substr(head.size(), line.find('"', head.size()) - head.size()));
    at = end + 1;
  }
  return {};
}

}  // namespace

std::optional<ToolVersion> toolVersion(std::string_view script) {
  ToolVersion version{.version = assignedText(script, "VERSION"), .date = assignedText(script, "VERSIONDATE")};
  const bool told = std::ranges::any_of(version.version, [](unsigned char c) { return c >= '0' && c <= '9'; });
  return told ? std::optional(std::move(version)) : std::nullopt;
}

}  // namespace corvane
