// Whether the user must not be disturbed: the values of that judgement. Who looks is not told here.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

struct FocusModeDetector {
  struct Evaluation {
    bool isActive = false;  // Focus, Do Not Disturb or a display kept awake by a process not ignored
    bool doNotDisturbUnreadable = false;
    bool displayCheckInconclusive = false;  // who keeps the display awake could not be read
    std::string diagnostic;                 // for the log
    friend bool operator==(const Evaluation&, const Evaluation&) = default;
  };

  // The process names between the commas, trimmed, without empty ones, in their order.
  [[nodiscard]] static std::vector<std::string> parseIgnoreList(std::string_view ignoreDNDApps);
};

}  // namespace corvane
