// Which macOS a root holds.
#pragma once

#include <optional>
#include <string>

#include "core/places.h"
#include "platform/files.h"

namespace corvane {

struct MacRelease {
  std::string version;               // ProductVersion: 26.1
  std::optional<std::string> build;  // ProductBuildVersion: 25B78
};

// Reads SystemVersion.plist. Absent where the root has none, or none that states a version. Any thread.
[[nodiscard]] std::optional<MacRelease> macRelease(const Files& files, const CorvaneConstants& places);

}  // namespace corvane
