// How an administrator names labels: exact names and patterns with the wildcards * and ?.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// Whether the whole of `text` fits `pattern`: "*" stands for any run of characters, none included, "?" for
// exactly one. Letters match in either case, since the tool lower-cases the label that it is given. Blanks
// around the pattern do not count; an empty pattern fits nothing. At worst quadratic, never exponential.
[[nodiscard]] bool matchesLabelPattern(std::string_view pattern, std::string_view text);

[[nodiscard]] bool matchesAnyLabelPattern(const std::vector<std::string>& patterns, std::string_view text);

}  // namespace corvane
