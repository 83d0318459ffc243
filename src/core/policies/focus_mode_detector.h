// Whether the user must not be disturbed. Looks through the port alone and logs nothing.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/focus_state.h"

namespace corvane {

struct FocusModeDetector {
  struct Evaluation {
    bool isActive = false;  // Focus, Do Not Disturb or a display kept awake by a process not ignored
    bool doNotDisturbUnreadable = false;
    bool displayCheckInconclusive = false;  // who keeps the display awake could not be read
    std::string diagnostic;                 // one line for the log
    friend bool operator==(const Evaluation&, const Evaluation&) = default;
  };

  // The process names between the commas, trimmed, without empty ones, in their order.
  [[nodiscard]] static std::vector<std::string> parseIgnoreList(std::string_view ignoreDNDApps);

  // Case of the names does not matter. What cannot be read counts as not disturbing, and is told: a Mac whose state is
  // unreadable must not put its updates off for ever. Main thread.
  [[nodiscard]] static Evaluation evaluate(const FocusState& state, std::span<const std::string> ignoringApps);
};

}  // namespace corvane
