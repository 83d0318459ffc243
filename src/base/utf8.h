// Text that came from outside as UTF-8: whether it is, and what may be shown of it when it is not.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

// Without overlong forms, surrogates and values past U+10FFFF.
[[nodiscard]] bool isUtf8(std::string_view text);

// The same text, with U+FFFD for every byte that belongs to no valid character.
[[nodiscard]] std::string validUtf8(std::string_view text);

}  // namespace corvane
