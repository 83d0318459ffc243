// File names as a Mac's disk compares them.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

// A form in which two names are equal when the usual Mac disk takes them for one: letters in lower case
// (Latin of Europe, Greek, Cyrillic) and their accents as combining marks, whichever way they were
// written. Bytes that are not UTF-8 stay as they are.
[[nodiscard]] std::string foldedFileName(std::string_view name);

}  // namespace corvane
