// The form of messages in log files, and log files read back for viewers. Touches no file.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/date.h"

namespace corvane {

struct ParsedLogRecord {
  Date timestamp;
  std::string level;  // as it stands in the line: "INFO", "WARNING", "WARN", "ERROR", "DEBUG", "NOTICE", "VERBOSE"
  std::string message;
  friend bool operator==(const ParsedLogRecord&, const ParsedLogRecord&) = default;
};
using LogRecords = std::vector<ParsedLogRecord>;

struct LogRecordCodec {
  // A message as it stands in its line: control bytes as \n, \r, \t or \x1b, a backslash as \\, so that what a
  // vendor's page or a file name says can neither begin a line of its own nor steer the terminal it is read in.
  [[nodiscard]] static std::string escaped(std::string_view message);

  // One record a line of the log's form, its message as it was before it was escaped. Any other line belongs to the
  // record before it, with its line break; what stands before the first record is left out.
  [[nodiscard]] static LogRecords parse(std::string_view contents);
};

struct LogFileCatalog {
  struct File {
    std::string path;
    LogRecords records;
  };

  // The system log, the fallback and the file written now, without repetitions.
  [[nodiscard]] static std::vector<std::filesystem::path> uniqueViewerPaths(
      const std::filesystem::path& currentWritePath, const std::filesystem::path& systemPath,
      const std::filesystem::path& fallbackPath);

  // All records in time order; those of one instant keep the order of the files and of their lines.
  [[nodiscard]] static LogRecords merge(std::vector<File> files);
};

}  // namespace corvane
