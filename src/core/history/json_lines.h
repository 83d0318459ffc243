// Files of one JSON object a line: splitting, appending so that no line spoils another, and bounds on their growth.
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

// A file above this size is cut down before the next line: to so many of its newest lines, years of a busy Mac, and to
// at most half the size, should lines be long.
inline constexpr std::size_t kLineFileLimit = 16U << 20U;
inline constexpr std::size_t kKeptLines = 20'000;

// Readers take so much of the end of a file that another program has let grow.
inline constexpr std::size_t kReadLinesLimit = 4 * kLineFileLimit;

// The newest whole lines of a file, all of them up to kReadLinesLimit. Fails as reading the file fails.
[[nodiscard]] Result<std::string> readNewestLines(const Files& files, const std::filesystem::path& path);

// Appends lines to one file and remembers whether the file ends with a line break, so that a line which an
// earlier crash tore is closed before the next. Not guarded: its owner's mutex is.
class LineAppender {
 public:
  // `line` without its line break. Makes the folder when it is missing. Where cutting the file down fails it grows on:
  // losing the line would be worse than the size. Nobody else may append meanwhile.
  [[nodiscard]] Status append(Files& files, const std::filesystem::path& path, std::string_view line, mode_t mode);

 private:
  bool endsWhole_ = false;
};

}  // namespace corvane
