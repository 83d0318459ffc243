// The log files of the program as one list that can be filtered. It never writes to a log file; "clear" empties the
// list alone.
#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/lifeline.h"
#include "base/localized.h"
#include "base/main_queue.h"
#include "base/observers.h"
#include "base/work_queue.h"
#include "core/logging/logging_service.h"
#include "diagnostics/log_entries.h"
#include "platform/files.h"

namespace corvane {

struct LogViewServices {
  MainQueue& main;
  WorkQueue& work;
  Files& files;
  LogSink& log;
  std::filesystem::path systemLog;
  std::filesystem::path fallbackLog;
  // Where the log is written to now; asked on the main thread at each refresh.
  std::function<std::filesystem::path()> currentWritePath;
};

// Main thread. Reading and filtering happen on the work queue: a log of hundreds of megabytes never holds up the main
// thread, and what is shown stays until the answer is there.
class LogViewModel {
 public:
  using LogLevel = LogEntryLevel;
  using LogEntry = corvane::LogEntry;

  // What stands beside the path while there is one to read.
  static constexpr std::string_view kNeverModified = toLocalize("On-disk log files are never modified by Clear.");
  // Of a longer file only the end is read.
  static constexpr std::size_t kMostBytes = 512U << 20U;

  explicit LogViewModel(LogViewServices services);
  ~LogViewModel();
  LogViewModel(const LogViewModel&) = delete;
  LogViewModel& operator=(const LogViewModel&) = delete;

  // Reads the log files anew. One that is still being read for an earlier call is no longer waited for.
  void refresh();
  // Empties the list until the next refresh.
  void clear();
  void setLogLevelFilter(LogLevel level);
  void setSearchText(std::string text);

  [[nodiscard]] const LogEntries& logs() const { return *logs_; }
  // By level and text. Follows a change of either, and of the logs, in a later turn, until when it `isFiltering`.
  [[nodiscard]] const FilteredLogs& filteredLogs() const { return filtered_; }
  [[nodiscard]] LogLevel logLevelFilter() const { return level_; }
  [[nodiscard]] const std::string& searchText() const { return searchText_; }
  [[nodiscard]] bool canClear() const { return canClear_; }
  [[nodiscard]] const std::string& logPath() const { return logPath_; }
  [[nodiscard]] const std::string& logPathStatusHelp() const { return logPathStatusHelp_; }
  [[nodiscard]] bool isLoading() const { return load_ != nullptr; }
  [[nodiscard]] bool isFiltering() const { return filtering_ != nullptr; }
  // A first load has been answered.
  [[nodiscard]] bool hasLoaded() const { return hasLoaded_; }

  // Called when anything above has changed.
  [[nodiscard]] Lease observe(std::function<void()> changed) { return changes_.add(std::move(changed)); }

 private:
  using Cancel = std::shared_ptr<std::atomic<bool>>;
  struct Loaded {
    std::vector<bool> readable;  // of each path
    LogRecords records;
  };
  static Loaded load(const std::vector<std::filesystem::path>& paths, const Files& files,
                     const std::atomic<bool>& cancelled);
  void startLoad();
  void take(const std::vector<std::filesystem::path>& paths, Loaded loaded);
  void tellStatus(const std::vector<std::filesystem::path>& considered, const std::vector<std::filesystem::path>& read);
  void filter();
  void startFilter();

  LogViewServices services_;
  Logger log_;
  std::uint64_t generation_ = 0;
  SharedLogEntries logs_ = std::make_shared<const LogEntries>();
  FilteredLogs filtered_;
  LogFilter filteredBy_;  // of filtered_
  LogLevel level_ = LogLevel::all;
  std::string searchText_;
  std::string logPath_;
  std::string logPathStatusHelp_ = localized(kNeverModified);
  bool canClear_ = false;
  bool hasLoaded_ = false;
  Cancel load_;       // of the one load that is out
  Cancel filtering_;  // of the one filtering that is out
  Observers changes_;
  Lifeline lifeline_;
};

}  // namespace corvane
