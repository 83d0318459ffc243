// Where bundles begin in a path. Text only, no file is looked at.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

// The path up to and including its outermost component that ends in ".app", provided something lies inside it:
// "/A/Outer.app" for "/A/Outer.app/Contents/Helpers/Inner.app/Contents/MacOS/Inner". Ignores case, as the
// file systems of a Mac do.
[[nodiscard]] std::optional<std::string> outermostBundle(std::string_view path);

}  // namespace corvane
