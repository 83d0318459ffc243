// The one log, written from every thread. It never fails its caller.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

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

}  // namespace corvane
