// Lets a batch job that is told to end tidy up first.
#pragma once

#include <functional>
#include <optional>

#include "app/diagnostic_job.h"
#include "platform/uv/uv_main_loop.h"

namespace corvane {

// Main thread. Made before all that is to be tidied up, so that it goes last.
class Interruption {
 public:
  Interruption() = default;
  // Ends the process by the signal that came, if one did, so that whoever waits for it is told the truth.
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  // As the loop's own, ended early by SIGINT, SIGTERM or SIGHUP. A second one ends the process at once.
  [[nodiscard]] Waited pump(UvMainLoop& loop, const std::function<bool()>& done, Duration limit);

 private:
  std::optional<int> signal_;
};

}  // namespace corvane
