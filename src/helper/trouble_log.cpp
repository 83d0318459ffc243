#include "helper/trouble_log.h"

namespace corvane {

void TroubleLog::Round::write(LogLevel level, std::string_view message) {
  if (level == LogLevel::warning || level == LogLevel::error) {
    const std::scoped_lock lock(troubles_.mutex_);
    met_.emplace(message);
    if (!troubles_.told_.emplace(message).second) return;
  }
  troubles_.log_.write(level, message);
}

void TroubleLog::Round::sawEverything() {
  const std::scoped_lock lock(troubles_.mutex_);
  std::erase_if(troubles_.told_, [this](const std::string& text) { return !met_.contains(text); });
}

}  // namespace corvane
