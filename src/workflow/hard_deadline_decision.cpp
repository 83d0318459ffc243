#include "workflow/hard_deadline_decision.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <string_view>

namespace corvane {

namespace {

std::string_view worded(HardPromptReason reason) {
  return reason == HardPromptReason::deadlineReached ? "Hard deadline reached" : "No deferral length left";
}

constexpr std::int64_t kLongestCountdown = 366LL * 24 * 60 * 60;  // seconds; more is a slip of the pen

HardDeadlineDecision insideBusinessHours(const HardDeadlineFacts& facts, const BusinessHoursGate& gate,
                                         const Calendar& calendar) {
  const auto end = gate.nextWindowEnd(facts.now);
  if (facts.armed && *facts.armed > facts.now && (!end || *facts.armed <= *end))
    return {.arm = std::nullopt,
            .logLine = fmt::format("{} inside business hours — presenting required-update prompt; keeping the "
                                   "enforcement already armed for {}.",
                                   worded(facts.reason), calendar.iso8601(*facts.armed))};
  if (!end)
    return {
        .arm = std::nullopt,
        .logLine = fmt::format("{} inside business hours — presenting required-update prompt.", worded(facts.reason))};
  return {.arm = end,
          .logLine = fmt::format("{} inside business hours — presenting required-update prompt and scheduling "
                                 "enforcement for {}.",
                                 worded(facts.reason), calendar.iso8601(*end))};
}

HardDeadlineDecision outsideBusinessHours(const HardDeadlineFacts& facts, const Calendar& calendar) {
  if (facts.armed && *facts.armed > facts.now)
    return {.arm = std::nullopt,
            .logLine = fmt::format("{} outside business hours — presenting required-update prompt with no further "
                                   "deferral; keeping the enforcement deadline already armed for {}.",
                                   worded(facts.reason), calendar.iso8601(*facts.armed))};
  const auto seconds = std::clamp<std::int64_t>(facts.timeoutSeconds, 1, kLongestCountdown);
  return {.arm = facts.now + std::chrono::seconds(seconds),
          .logLine = fmt::format("{} outside business hours — presenting required-update prompt with no further "
                                 "deferral and a {}-second enforcement countdown (DialogTimeoutDeferral).",
                                 worded(facts.reason), seconds)};
}

}  // namespace

HardDeadlineDecision decideHardDeadline(const HardDeadlineFacts& facts, const BusinessHoursGate& gate,
                                        const Calendar& calendar) {
  return !gate.isDisabled() && gate.isWithinBusinessHours(facts.now) ? insideBusinessHours(facts, gate, calendar)
                                                                     : outsideBusinessHours(facts, calendar);
}

}  // namespace corvane
