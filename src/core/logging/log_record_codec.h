// Log files read back, for viewers. Nothing is written here.
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
  // One record a line of the log's form. Any other line belongs to the record before it, with its line break;
  // what stands before the first record is left out.
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
