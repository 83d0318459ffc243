#include "platform/posix/process_application.h"

namespace corvane {

void ProcessApplication::setBadge(const std::optional<std::string>& label) {
  if (label == label_) return;
  label_ = label;
  if (badge_) badge_(label_);
}

}  // namespace corvane
