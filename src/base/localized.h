// The text catalogue: user texts by their English literal. One of the two process-wide values.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace corvane {

// The text in the user's language, or the literal itself. Any thread. Texts with values in them are
// localised first and filled afterwards: fmt::format(fmt::runtime(localized("Updating {} …")), name).
[[nodiscard]] std::string localized(std::string_view literal);

// Installs where `localized` looks; an empty result means the literal. Called once, before any thread starts.
void installTextCatalogue(std::function<std::string(std::string_view)> lookup);

}  // namespace corvane
