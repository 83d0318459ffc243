// The file whose date proves that the helper lives. Its content is for people only.
#pragma once

#include <filesystem>

#include "base/main_queue.h"
#include "core/logging/logging_service.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace corvane {

inline constexpr Duration kHeartbeatInterval = 15s;

// Main thread. Writes at once and every 15 seconds; a failure is told to the log once, until a write succeeds again.
// The file goes with the helper that ends in good order.
class Heartbeat {
 public:
  Heartbeat(std::filesystem::path file, Files& files, const Clock& clock, MainQueue& main, LogSink& log);
  ~Heartbeat();
  Heartbeat(const Heartbeat&) = delete;
  Heartbeat& operator=(const Heartbeat&) = delete;

 private:
  void beat();

  std::filesystem::path file_;
  Files& files_;
  const Clock& clock_;
  Logger log_;
  bool failing_ = false;
  Lease timer_;
};

}  // namespace corvane
