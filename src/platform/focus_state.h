// What of this session says that its user must not be disturbed. Who may be ignored is not decided here.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvane {

// Main thread; answered at once.
class FocusState {
 public:
  virtual ~FocusState() = default;

  // Focus or Do Not Disturb is on; absent when that cannot be read.
  [[nodiscard]] virtual std::optional<bool> doNotDisturb() const = 0;

  // Names of the processes that keep the display awake; absent when they cannot be read.
  [[nodiscard]] virtual std::optional<std::vector<std::string>> displaySleepHolders() const = 0;
};

}  // namespace corvane
