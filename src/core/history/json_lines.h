// Files of one JSON object a line: splitting, appending so that no line spoils another, and bounds on their growth.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "base/error.h"
#include "core/logging/logging_service.h"
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

// The lines of one reading that were left out.
struct DamagedLines {
  std::size_t count = 0;
  std::size_t first = 0;  // the lowest number, and what is wrong with that line
  std::string reason;

  // In any order.
  void add(std::size_t line, std::string_view why) {
    if (++count > 1 && line > first) return;
    first = line;
    reason = why;
  }
};

// A file above this size is cut down before the next line: to so many of its newest lines, years of a busy Mac, and to
// at most half the size, should lines be long.
inline constexpr std::size_t kLineFileLimit = 16U << 20U;
inline constexpr std::size_t kKeptLines = 20'000;

// Readers take so much of the end of a file that another program has let grow.
inline constexpr std::size_t kReadLinesLimit = 4 * kLineFileLimit;

// One such file. Any thread; among all processes one may append, all may read.
class JsonLinesFile {
 public:
  // `log` is told what is left out.
  JsonLinesFile(std::filesystem::path path, mode_t mode, Files& files, Logger log)
      : path_(std::move(path)), mode_(mode), files_(files), log_(std::move(log)) {}

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  // `line` without its line break, in one write. A line that an earlier crash tore is closed first, so that it costs
  // itself only. Makes the folder when it is missing. Where cutting the file down fails it grows on: losing the line
  // would be worse than the size.
  [[nodiscard]] Status append(std::string_view line);

  // The newest whole lines, all of them up to kReadLinesLimit; none where there is no file or it cannot be read.
  [[nodiscard]] std::string newestLines() const;

  // Once a process.
  void tellUnusable(std::string_view reason) const;
  // One line for all of them, and another only when a later reading finds more.
  void tellDamaged(const DamagedLines& damaged) const;

 private:
  std::filesystem::path path_;
  mode_t mode_;
  Files& files_;
  Logger log_;
  mutable std::mutex mutex_;
  mutable bool toldUnusable_ = false;
  mutable std::size_t toldDamaged_ = 0;
  bool endsWhole_ = false;  // the file ends with a line break
};

}  // namespace corvane
