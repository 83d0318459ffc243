// The two lines that tell the user what goes on and what went wrong. Their wording belongs to the flows.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "workflow/status_fields.h"

namespace corvane {

// Main thread.
class UserMessages {
 public:
  UserMessages(MessageFields& fields, std::function<void()> changed) : fields_(fields), changed_(std::move(changed)) {}

  void status(std::optional<std::string> text) {
    fields_.statusMessage = std::move(text);
    changed_();
  }
  void error(std::optional<std::string> text) {
    fields_.errorMessage = std::move(text);
    changed_();
  }

 private:
  MessageFields& fields_;
  std::function<void()> changed_;
};

}  // namespace corvane
