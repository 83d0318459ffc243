// A log that keeps its lines.
#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "core/logging/logging_service.h"

namespace corvane {

class RecordingLog final : public LogSink {
 public:
  struct Line {
    LogLevel level;
    std::string message;
    friend bool operator==(const Line&, const Line&) = default;
  };

  void write(LogLevel level, std::string_view message) override {
    const std::lock_guard lock(mutex_);
    lines_.push_back({level, std::string(message)});
  }

  [[nodiscard]] std::vector<Line> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  [[nodiscard]] std::vector<std::string> messages() const {
    std::vector<std::string> all;
    for (const auto& line : lines()) all.push_back(line.message);
    return all;
  }
  [[nodiscard]] std::size_t count(std::string_view text) const {
    const auto all = lines();
    return static_cast<std::size_t>(
        std::ranges::count_if(all, [&](const Line& line) { return line.message.find(text) != std::string::npos; }));
  }
  [[nodiscard]] bool holds(std::string_view text) const { return count(text) > 0; }
  void clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<Line> lines_;
};

}  // namespace corvane
