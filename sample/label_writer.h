// Label fragments as their authors write them: a head of patterns, assignments, two semicolons.
#pragma once

#include <string>
#include <string_view>

#include "sample/catalogue.h"

namespace corvane::sample {

// `vendors` is the server's address without a slash at its end.
[[nodiscard]] std::string labelFragment(const LabelSpec& label, std::string_view vendors);

// Without ".sh".
[[nodiscard]] std::string fragmentFileName(const LabelSpec& label);

// Path of the download under the vendors' folder: "download/quill.dmg".
[[nodiscard]] std::string downloadPath(const LabelSpec& label);

// The script of a label's `updateTool`, which brings its application up to date by itself.
[[nodiscard]] std::string updateToolScript(const LabelSpec& label);

}  // namespace corvane::sample
