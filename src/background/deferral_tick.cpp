#include "background/deferral_tick.h"

#include <fmt/format.h>

namespace corvane {

namespace {

constexpr Duration kAfterHoursCountdown = 60min;
// The two dates pass through property lists that drop fractions.
constexpr Duration kSameEnforcement = 2s;

std::string dateText(std::optional<Date> date, const Calendar& calendar, std::string_view absent) {
  return date ? calendar.iso8601(*date) : std::string(absent);
}

}  // namespace

CycleDecision decideCycle(const CadenceState& stored, const PatchingCadenceManager& cadence, Date now,
                          bool testAnchorActive) {
  const auto& calendar = cadence.calendar();
  if (!stored.currentPatchingStartDate) {
    const auto fresh = cadence.freshInstallCycle(now);
    return {.write = fresh,
            .logLine = fmt::format("No CurrentPatchingStartDate on file — seeding cadence anchor at {}, next cycle {}.",
                                   dateText(fresh.currentPatchingStartDate, calendar, "<nil>"),
                                   dateText(fresh.nextCycleStartDate, calendar, "<nil>"))};
  }
  const auto start = *stored.currentPatchingStartDate;
  if (cadence.shouldResetCycle(stored, now))
    return {.write = cadence.rolledForwardCycle(stored, now),
            .newCycle = true,
            .resetDeferrals = true,
            .logLine = fmt::format("Patching cycle reached {} — arming the next cycle and resetting deferral counters.",
                                   dateText(stored.nextCycleStartDate, calendar, "its end"))};
  const bool malformed = cadence.isAnchorMalformed(stored);
  if (!malformed || testAnchorActive) {
    CycleDecision kept;
    if (malformed)
      kept.logLine =
          fmt::format("Preserving admin test-mode anchor {} instead of rolling it forward.", calendar.iso8601(start));
    if (!stored.nextCycleStartDate) {
      kept.write = stored;
      kept.write->nextCycleStartDate = cadence.nextCycleStart(start);
    }
    return kept;
  }
  const auto day = calendar.startOfDay(start);
  CadenceState repaired{.currentPatchingStartDate = day,
                        .lastPatchingCompletionDate = stored.lastPatchingCompletionDate,
                        .nextCycleStartDate = cadence.nextCycleStart(day)};
  const bool ended = cadence.shouldResetCycle(repaired, now);
  if (ended) repaired = cadence.rolledForwardCycle(repaired, now);
  return {
      .write = repaired,
      .newCycle = ended,
      .resetDeferrals = ended,
      .logLine = fmt::format("CurrentPatchingStartDate {} is not a start-of-day cadence anchor — repairing it to {}.",
                             calendar.iso8601(start), dateText(repaired.currentPatchingStartDate, calendar, "<nil>")),
      .isWarning = true};
}

std::optional<MissedEnforcement> missedEnforcement(std::optional<Date> firedAt, const BusinessHoursGate& gate, Date now,
                                                   const Calendar& calendar) {
  if (!firedAt || !gate.missedAfterHoursEnforcement(firedAt, now)) return std::nullopt;
  const auto target = now + kAfterHoursCountdown;
  return MissedEnforcement{
      .target = target,
      .logLine = fmt::format("Missed after-hours enforcement detected (hard deadline fired {} outside business hours, "
                             "now back inside) — arming 1-hour countdown to {}.",
                             calendar.iso8601(*firedAt), calendar.iso8601(target))};
}

bool isArmedDue(const DueFacts& facts) { return facts.armed && *facts.armed <= facts.now; }

bool wantsUser(const DueFacts& facts) {
  const bool hard = facts.status == DeferralDeadlineStatus::hardDeadlineReached;
  if (!hard && !isArmedDue(facts)) return false;
  if (facts.showsPrompt) return false;
  const bool dismissed = facts.dismissedUntil && facts.armed && *facts.armed > facts.now &&
                         std::chrono::abs(*facts.dismissedUntil - *facts.armed) < kSameEnforcement;
  return !(hard && dismissed);
}

}  // namespace corvane
