// The root helper's manual page, made from its help and its places. Pure.
#pragma once

#include <string>

namespace corvane {

// packaging/man/CorvaneRootHelper.8
[[nodiscard]] std::string helperManual();

}  // namespace corvane
