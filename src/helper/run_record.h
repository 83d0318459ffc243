// What the helper is about to do to the machine, on disk before it does it, so that a helper that was killed in a
// run is understood by the next one. Holds no results: those are receipts.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

#include "base/error.h"
#include "core/logging/logging_service.h"
#include "core/records/app_info.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace corvane {

// Main thread. The file lies beside the other state files and exists only while a run is under way.
class RunRecord {
 public:
  RunRecord(std::filesystem::path file, Files& files, const Clock& clock, LogSink& log);

  // Fails when the file cannot be written; then nothing may be installed.
  [[nodiscard]] Status begin(const Labels& labels);
  // The label in hand, how many are done, and the child that installs it once that runs.
  void working(const Label& label, std::size_t done, std::optional<pid_t> child);
  void end();

  // At start: tells the log of a run that a killed helper left, ends its installer if that still runs (two at
  // once would disturb each other) and removes the record.
  void settle();

 private:
  [[nodiscard]] Status write() const;

  std::filesystem::path file_;
  Files& files_;
  const Clock& clock_;
  Logger log_;
  Labels labels_;
  Label current_;
  std::size_t done_ = 0;
  std::optional<pid_t> child_;
  Date startedAt_{};
};

}  // namespace corvane
