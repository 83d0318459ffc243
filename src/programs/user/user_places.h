// Who runs this program, and where it works.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/error.h"
#include "core/places.h"

namespace corvane {

// Where this program works: CORVANE_ROOT names the system root, and HOME the user's folder. A root other than
// "/" is honoured only where the folder belongs to the user and nobody else may write to it; otherwise the
// start fails with the line to print.
[[nodiscard]] Result<CorvaneConstants> placesFromEnvironment();

// Where a program of this user remembers something of this session: XDG_RUNTIME_DIR, so that nothing is known of an
// earlier session; the user's support folder where the session has none. The folder exists, if it can.
[[nodiscard]] std::filesystem::path sessionMemoryFolder(std::string_view name);

// The user's short name; the number of the user where the machine knows no name.
[[nodiscard]] std::string userShortName();

}  // namespace corvane
