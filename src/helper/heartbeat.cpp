#include "helper/heartbeat.h"

#include <fmt/format.h>

namespace corvane {

Heartbeat::Heartbeat(std::filesystem::path file, Files& files, const Clock& clock, MainQueue& main, LogSink& log)
    : file_(std::move(file)), files_(files), clock_(clock), log_(log, "Heartbeat") {
  beat();
  timer_ = main.every(kHeartbeatInterval, [this] { beat(); });
}

Heartbeat::~Heartbeat() { (void)files_.remove(file_); }

void Heartbeat::beat() {
  const auto written = files_.replace(file_, iso8601Utc(clock_.now()) + "\n", 0644);
  if (!written && !failing_) log_.error(fmt::format("The heartbeat cannot be written: {}", written.error().text));
  failing_ = !written;
}

}  // namespace corvane
