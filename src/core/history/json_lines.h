// Files of one JSON object a line: splitting, and appending so that no line spoils another.
#pragma once

#include <filesystem>
#include <string_view>

#include "base/error.h"
#include "platform/files.h"

namespace corvane {

// Calls `each(line, number)` for every line that is not blank, numbers from 1. The last one may lack its
// line break.
template <class Each>
void forEachLine(std::string_view text, Each each) {
  for (std::size_t number = 1; !text.empty(); ++number) {
    const auto end = text.find('\n');
    const auto line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
    if (line.find_first_not_of(" \t\r") != std::string_view::npos) each(line, number);
  }
}

// Appends lines to one file and remembers whether the file ends with a line break, so that a line which an
// earlier crash tore is closed before the next. Not guarded: its owner's mutex is.
class LineAppender {
 public:
  // `line` without its line break. Makes the folder when it is missing.
  [[nodiscard]] Status append(Files& files, const std::filesystem::path& path, std::string_view line, mode_t mode);

 private:
  bool endsWhole_ = false;
};

}  // namespace corvane
