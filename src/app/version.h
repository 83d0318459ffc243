// The version that this program was built as.
#pragma once

#include <string_view>

namespace corvane {

inline constexpr std::string_view kProgramVersion = CORVANE_VERSION;

}  // namespace corvane
