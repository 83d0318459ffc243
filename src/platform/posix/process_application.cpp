#include "platform/posix/process_application.h"

#include <utility>

namespace corvane {

void ProcessApplication::setBadgeSink(BadgeSink badge) {
  badge_ = std::move(badge);
  if (badge_ && label_) badge_(label_);
}

void ProcessApplication::setBadge(const std::optional<std::string>& label) {
  if (label == label_) return;
  label_ = label;
  if (badge_) badge_(label_);
}

}  // namespace corvane
