// The wrapping that a signed profile comes in.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/error.h"

namespace corvane::ctl {

// Whether the bytes can be no property list but may be a signed or encrypted message (CMS, as bytes).
[[nodiscard]] bool looksWrapped(std::string_view bytes);

// What was signed. Who signed it is not looked at. Fails on what is no signed message, or has its content elsewhere;
// the text says how to unwrap it by other means.
[[nodiscard]] Result<std::string> unwrapped(std::string_view bytes);

}  // namespace corvane::ctl
