// What a prompt that has become hard arms: how long the user still has before the forced install.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/calendar.h"
#include "base/date.h"
#include "core/policies/business_hours_gate.h"

namespace corvane {

// Why the prompt is hard.
enum class HardPromptReason {
  deadlineReached,
  noLengthLeft  // the deadline is still ahead, but no length on offer ends before it
};

struct HardDeadlineFacts {
  HardPromptReason reason = HardPromptReason::deadlineReached;  // worded in the line, decides nothing
  Date now;
  std::optional<Date> armed;        // the stored next launch
  std::int64_t timeoutSeconds = 0;  // the configured countdown; less than 1 counts as 1
};

struct HardDeadlineDecision {
  std::optional<Date> arm;  // absent: what is armed stays
  std::string logLine;
  friend bool operator==(const HardDeadlineDecision&, const HardDeadlineDecision&) = default;
};

// Inside business hours the install waits for the end of the window; an enforcement armed until then, the end
// itself included, is kept, a later one brought forward. Outside them whatever is armed ahead is kept, else the
// short countdown runs. A disabled gate counts as outside.
[[nodiscard]] HardDeadlineDecision decideHardDeadline(const HardDeadlineFacts& facts, const BusinessHoursGate& gate,
                                                      const Calendar& calendar);

}  // namespace corvane
