#include "core/discovery/mac_release.h"

#include "base/ascii.h"
#include "base/plist.h"

namespace corvane {

std::optional<MacRelease> macRelease(const Files& files, const CorvaneConstants& places) {
  const auto bytes = files.read(places.root / "System/Library/CoreServices/SystemVersion.plist");
  const auto document = bytes ? parsePlist(*bytes) : std::unexpected(bytes.error());
  const auto* values = document ? document->root.dict() : nullptr;
  if (values == nullptr) return std::nullopt;
  const auto text = [&](const char* key) -> std::optional<std::string> {
    const auto found = values->find(key);
    const auto value = found == values->end() ? std::nullopt : found->second.string();
    return value && !trimmed(*value).empty() ? std::optional<std::string>(*value) : std::nullopt;
  };
  const auto version = text("ProductVersion");
  if (!version) return std::nullopt;
  return MacRelease{.version = *version, .build = text("ProductBuildVersion")};
}

}  // namespace corvane
