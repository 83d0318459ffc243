// The mark of a text that is localised later.
#pragma once

#include <string_view>

namespace corvane {

// The literal itself, for whoever shows it to localise; marked, because the catalogue's entries are gathered from the
// sources.
[[nodiscard]] consteval std::string_view toLocalize(std::string_view literal) { return literal; }

}  // namespace corvane
