// A time of day as settings hold it.
#pragma once

#include <optional>
#include <string_view>

namespace corvane {

// "HH:mm" on a clock of 24 hours to minutes since midnight, blanks around it aside; "9:05" reads too, "24:00" does not.
[[nodiscard]] std::optional<int> minutesOfDay(std::string_view text);

}  // namespace corvane
