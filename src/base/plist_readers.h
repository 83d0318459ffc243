// The two readers behind parsePlist. They are ours because the library that writes property lists aborts on some
// damaged binary files, overflows the stack on deep ones and lets truncated XML pass.
#pragma once

#include <string_view>

#include "base/plist.h"

namespace corvane {

// How deep values may nest in either form.
inline constexpr int kMostPlistDepth = 256;

[[nodiscard]] inline std::unexpected<Error> plistFailure(std::string text) {
  return failure("CRVPlist", 1, std::move(text));
}

// Checks every offset, length and reference. Objects that are shared are copied, up to a bound on the whole.
[[nodiscard]] Result<PlistValue> readBinaryPlist(std::string_view bytes);

// UTF-8 only. Knows the elements of property lists and no others, and no entities of a document's own.
[[nodiscard]] Result<PlistValue> readXmlPlist(std::string_view text);

// Appends a code point as UTF-8; what is none becomes U+FFFD.
void appendUtf8(std::string& out, char32_t codePoint);

}  // namespace corvane
