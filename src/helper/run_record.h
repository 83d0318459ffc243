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

// What a tool that is told to end has for tidying up before it is killed: a copy that is cut off leaves no application.
inline constexpr Duration kToolStopGrace = 10s;

// Main thread. The file lies beside the other state files and exists only while a run is under way.
class RunRecord {
 public:
  // `toolGrace` is what a tool that was left running has for its end; `doing` is what it does to a label, for the log.
  RunRecord(std::filesystem::path file, Files& files, const Clock& clock, LogSink& log,
            Duration toolGrace = kToolStopGrace, std::string_view doing = "installed");

  // Fails when the file cannot be written; then nothing may be installed.
  [[nodiscard]] Status begin(const Labels& labels);
  // The label in hand, how many are done, and the child that installs it while that runs.
  void working(const Label& label, std::size_t done, std::optional<pid_t> child);
  void end();

  // At start: tells the log of a run that a killed helper left, ends what still runs of its installer's session (two at
  // once would disturb each other), politely first, and removes the record. Waits for that end, at most the grace; no
  // run may be taken before.
  void settle();

 private:
  [[nodiscard]] Status write() const;
  [[nodiscard]] bool endLeftTool(pid_t leader, const std::string& stamp) const;

  std::filesystem::path file_;
  Files& files_;
  const Clock& clock_;
  Logger log_;
  Duration toolGrace_;
  std::string doing_;
  Labels labels_;
  Label current_;
  std::size_t done_ = 0;
  std::optional<pid_t> child_;
  Date startedAt_{};
};

}  // namespace corvane
