// The road to the root helper: one framed request, one framed answer.
#pragma once

#include <string>

#include "base/error.h"
#include "base/task.h"

namespace corvane {

// Main thread. Each request has a connection of its own and completes exactly once, in a later turn: with
// the answer's body, or with an error in the domain "CRVHelperChannel" when the helper cannot be reached,
// hangs up, or answers with a frame that is over the limit.
class HelperChannel {
 public:
  virtual ~HelperChannel() = default;
  virtual void request(std::string body, Completion<Result<std::string>> done) = 0;
};

}  // namespace corvane
