// Who runs this program, and where it works.
#pragma once

#include <string>

#include "base/error.h"
#include "core/places.h"

namespace corvane {

// Where this program works: CORVANE_ROOT names the system root, and HOME the user's folder. A root other than
// "/" is honoured only where the folder belongs to the user and nobody else may write to it; otherwise the
// start fails with the line to print.
[[nodiscard]] Result<CorvaneConstants> placesFromEnvironment();

// The user's short name; the number of the user where the machine knows no name.
[[nodiscard]] std::string userShortName();

}  // namespace corvane
