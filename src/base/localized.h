// The text catalogue: user texts by their English literal. One of the two process-wide values.
#pragma once

#include <fmt/format.h>

#include <functional>
#include <string>
#include <string_view>

#include "base/localizable.h"

namespace corvane {

// The text in the user's language, or the literal itself. Any thread.
[[nodiscard]] std::string localized(std::string_view literal);

// The same with values in it: localised first and filled afterwards.
template <class... Args>
requires(sizeof...(Args) > 0) [[nodiscard]] std::string localized(std::string_view literal, const Args&... args) {
  return fmt::format(fmt::runtime(localized(literal)), args...);
}

// Installs where `localized` looks; an empty result means the literal. Called once, before any thread starts.
void installTextCatalogue(std::function<std::string(std::string_view)> lookup);

}  // namespace corvane
