// The application's manual page, made from its usage text and its places. Pure.
#pragma once

#include <string>

namespace corvane {

// packaging/man/Corvane.1
[[nodiscard]] std::string applicationManual();

}  // namespace corvane
