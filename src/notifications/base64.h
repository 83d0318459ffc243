// Base64 of the standard alphabet, with padding and without line breaks.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

[[nodiscard]] std::string base64(std::string_view bytes);

// Absent for any text that base64() does not write: other characters, white space, missing padding, set bits behind
// the last byte.
[[nodiscard]] std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace corvane
