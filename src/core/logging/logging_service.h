// The one log, written from every thread. It never fails its caller.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "base/calendar.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace corvane {

// Levels in order of weight. Verbose lines reach the log only when VerboseMode or DebugMode is on.
enum class LogLevel { info, warning, error, verbose };

// What everybody logs through. Messages carry their owner's name in front: "StatusViewModel: ...".
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void write(LogLevel level, std::string_view message) = 0;
};

// An owner's logger: puts "<owner>: " in front of each message. A cheap value.
class Logger {
 public:
  Logger(LogSink& sink, std::string_view owner) : sink_(&sink), prefix_(std::string(owner) + ": ") {}
  void info(std::string_view message) const { sink_->write(LogLevel::info, prefix_ + std::string(message)); }
  void warning(std::string_view message) const { sink_->write(LogLevel::warning, prefix_ + std::string(message)); }
  void error(std::string_view message) const { sink_->write(LogLevel::error, prefix_ + std::string(message)); }
  void verbose(std::string_view message) const { sink_->write(LogLevel::verbose, prefix_ + std::string(message)); }

 private:
  LogSink* sink_;
  std::string prefix_;
};

struct LogPaths {
  std::filesystem::path system;                   // the log of the machine
  std::filesystem::path archive;                  // folder of its rotated files
  std::optional<std::filesystem::path> fallback;  // of a user who may not write the system log
};

// The helper owns the system log, makes its folder and rotates it; a user's process rotates only its fallback, and
// falls back where the folder is missing.
enum class LogRole { helper, user };

// "<ISO 8601 with milliseconds and offset> [LEVEL] <message>", one line a message, escaped as LogRecordCodec tells.
// Any thread. Where neither file can be written, lines are dropped in silence.
class LoggingService final : public LogSink {
 public:
  // A log of this size is rotated before the next line; so many rotated files are kept.
  static constexpr std::uint64_t kRotationSize = 10U << 20U;
  static constexpr int kKeptArchives = 5;

  // `calendar` is asked for each line, from the thread that logs.
  LoggingService(LogPaths paths, LogRole role, Files& files, const Clock& clock, std::function<Calendar()> calendar);

  void write(LogLevel level, std::string_view message) override;

  // Verbose lines are written when either setting is on. Called at launch and after each change of settings.
  void refreshVerbosityFromPreferences(bool verboseMode, bool debugMode) { verbose_ = verboseMode || debugMode; }

  // Where lines go now. Asking opens the log as a first line would.
  [[nodiscard]] std::filesystem::path logFilePath() const;
  [[nodiscard]] bool isUsingUserFallback() const;

 private:
  [[nodiscard]] bool appendTo(const std::filesystem::path& path, std::string_view line) const;
  void put(std::string_view line) const;
  void rotateWhenFull(const std::filesystem::path& path, const std::filesystem::path& archive) const;

  LogPaths paths_;
  LogRole role_;
  Files& files_;
  const Clock& clock_;
  std::function<Calendar()> calendar_;
  std::atomic<bool> verbose_ = false;
  mutable std::mutex mutex_;
  mutable bool usesFallback_ = false;
  mutable bool probed_ = false;
};

}  // namespace corvane
