// What a look at the armed moment, the cycle and the deadlines means, as pure decisions. The watcher takes the facts
// and acts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/date.h"
#include "core/policies/business_hours_gate.h"
#include "core/policies/patching_cadence_manager.h"
#include "core/records/deferral_records.h"
#include "core/records/enumerations.h"

namespace corvane {

// What becomes of the stored cycle.
struct CycleDecision {
  std::optional<CadenceState> write;  // absent: it stays as it is
  bool newCycle = false;
  bool resetDeferrals = false;  // counters, dates and labels set aside belong to the old cycle
  std::string logLine;          // empty: nothing to say
  bool isWarning = false;
};

// A missing start is seeded, an ended cycle rolled on, a start that is not at the start of a day repaired; the test
// mode's own anchor is left alone, but ends like any other.
[[nodiscard]] CycleDecision decideCycle(const CadenceState& stored, const PatchingCadenceManager& cadence, Date now,
                                        bool testAnchorActive);

// After hours came and went without the enforcement that was due: it gets an hour's countdown now.
struct MissedEnforcement {
  Date target;
  std::string logLine;
};
[[nodiscard]] std::optional<MissedEnforcement> missedEnforcement(std::optional<Date> firedAt,
                                                                 const BusinessHoursGate& gate, Date now,
                                                                 const Calendar& calendar);

// Whether a deadline or the armed moment wants the user, as far as the stored values tell.
struct DueFacts {
  DeferralDeadlineStatus status = DeferralDeadlineStatus::normal;
  std::optional<Date> armed;
  std::optional<Date> dismissedUntil;  // the hard prompt was closed for this enforcement
  bool showsPrompt = false;
  Date now;
};
[[nodiscard]] bool isArmedDue(const DueFacts& facts);
[[nodiscard]] bool wantsUser(const DueFacts& facts);

}  // namespace corvane
