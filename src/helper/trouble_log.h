// A log for work that is done again and again: what is wrong is told when it begins, not at every look. Decides
// nothing about what is wrong.
#pragma once

#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "core/logging/logging_service.h"

namespace corvane {

// Any thread; several rounds may be under way at once.
class TroubleLog {
 public:
  explicit TroubleLog(LogSink& log) : log_(log) {}

  // One look at things. Passes on information as it comes, a warning or an error only when no round before told the
  // same text.
  class Round final : public LogSink {
   public:
    explicit Round(TroubleLog& troubles) : troubles_(troubles) {}
    void write(LogLevel level, std::string_view message) override;

    // For a round that has looked at everything: what it did not meet is over, and told when it comes back.
    void sawEverything();

   private:
    TroubleLog& troubles_;
    std::set<std::string> met_;  // guarded by the troubles' mutex
  };

 private:
  LogSink& log_;
  std::mutex mutex_;
  std::set<std::string> told_;
};

}  // namespace corvane
