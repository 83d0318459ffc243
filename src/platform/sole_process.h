// Many starts of one program, one process that acts for all of them.
#pragma once

#include <functional>
#include <string>

#include "base/error.h"
#include "base/task.h"

namespace corvane {

struct SoleProcessError {
  static constexpr const char* domain = "CRVSoleProcess";
  static constexpr int noSession = 1;  // nowhere to meet: no session, or it does not answer
  static constexpr int nobody = 2;     // there is none, or it ended before it took the message
  static constexpr int silent = 3;     // there is one that does not answer
  static constexpr int refused = 4;    // it did not take the message, and said why
};

// Main thread. The first two answer at once and wait for some seconds at most: a process that has just started has
// nothing else to do.
class SoleProcess {
 public:
  virtual ~SoleProcess() = default;

  // Whether this process is the one now. What others hand over from here on waits for listen(), or goes back to them
  // when this process ends.
  virtual Result<bool> claim() = 0;

  // Gives a message to the one process; returns when that has taken it.
  virtual Status handOver(const std::string& message) = 0;

  // `received` runs in a later turn for each message and says whether it is taken; `lost` once, when the session has
  // ended.
  virtual void listen(std::function<Status(const std::string&)> received, Task lost) = 0;

  // From now on another process may be the one. What was not received goes back.
  virtual void leave() = 0;
};

}  // namespace corvane
