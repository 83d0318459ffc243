// Which log files there are to look at, and their records as one list. Touches no file.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/logging/log_records.h"

namespace corvane {

struct LogFileCatalog {
  struct File {
    std::string path;
    LogRecords records;
  };

  // The system log, the fallback and the file written now, without repetitions.
  [[nodiscard]] static std::vector<std::filesystem::path> uniqueViewerPaths(
      const std::filesystem::path& currentWritePath, const std::filesystem::path& systemPath,
      const std::filesystem::path& fallbackPath);

  // All records in time order; those of one instant keep the order of the files and of their lines. Of records that
  // are alike in instant, level and message the first stands alone, as when one line was read from two files.
  [[nodiscard]] static LogRecords merge(std::vector<File> files);
};

}  // namespace corvane
