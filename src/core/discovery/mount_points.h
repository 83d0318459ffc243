// Where other volumes begin.
#pragma once

#include <filesystem>

namespace corvane {

// Whether a volume of its own is mounted anywhere below the folder. Links on the way to the folder are followed, none
// below it. True as well when that cannot be found out.
[[nodiscard]] bool mayHoldMountPoints(const std::filesystem::path& folder);

}  // namespace corvane
