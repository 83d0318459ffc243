// Usage signals that wait to be sent, kept on disk so that a restart loses none.
#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include "base/json.h"
#include "core/logging/logging_service.h"
#include "platform/files.h"

namespace corvane {

// Main thread. Each change writes the small file anew, atomically. A file that is none of ours is set aside.
class UsageQueue {
 public:
  // The oldest goes when one more comes.
  static constexpr std::size_t kMostSignals = 200;

  // Reads what an earlier run left.
  UsageQueue(std::filesystem::path file, Files& files, const Logger& log);

  [[nodiscard]] bool empty() const { return signals_.empty(); }
  [[nodiscard]] std::size_t size() const { return signals_.size(); }
  // The oldest, at most `most`.
  [[nodiscard]] JsonArray front(std::size_t most) const;

  void push(JsonValue signal);
  // Those at the front that were sent. Some may have gone meanwhile, because of too many behind them.
  void pop(const JsonArray& sent);
  void clear();

 private:
  [[nodiscard]] Result<JsonArray> readAll() const;
  void save();
  void setAside(const std::string& reason);

  std::filesystem::path file_;
  Files& files_;
  Logger log_;
  JsonArray signals_;
};

}  // namespace corvane
