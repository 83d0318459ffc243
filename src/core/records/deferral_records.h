// The cycle's counters and dates, and what the prompt says of limits and applications.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>

#include "base/date.h"
#include "core/records/enumerations.h"

namespace corvane {

struct DeferralInfo {
  std::int64_t focusDeferralCount = 0;
  std::int64_t hardDeferralCount = 0;
  std::optional<Date> hardDeferralDate;

  // Which limit stands behind a hard deadline: `count` at or above a given `maxCount` (a limit of 0 is
  // reached at once), `date` when the deadline has passed, both, or absent for neither.
  [[nodiscard]] std::optional<HardDeadlineTrigger> hardDeadlineTrigger(std::optional<std::int64_t> maxCount,
                                                                       std::optional<Date> deadlineDate,
                                                                       Date now) const;
  friend bool operator==(const DeferralInfo&, const DeferralInfo&) = default;
};

// What remains before the hard deadline.
namespace limit {
struct CountOnly {
  std::int64_t count;
  friend bool operator==(const CountOnly&, const CountOnly&) = default;
};
struct DaysOnly {
  std::int64_t days;
  friend bool operator==(const DaysOnly&, const DaysOnly&) = default;
};
struct Both {
  std::int64_t count;
  Date deadline;
  bool deadlineIsNear;  // less than 24 hours away
  friend bool operator==(const Both&, const Both&) = default;
};
}  // namespace limit
using DeferralLimitSummary = std::variant<limit::CountOnly, limit::DaysOnly, limit::Both>;

// The patch cycle: from `currentPatchingStartDate` to `nextCycleStartDate`.
struct CadenceState {
  std::optional<Date> currentPatchingStartDate;
  std::optional<Date> lastPatchingCompletionDate;
  std::optional<Date> nextCycleStartDate;
  friend bool operator==(const CadenceState&, const CadenceState&) = default;
};

enum class DeferralInstallBehavior {
  killed,
  toldToQuitOrForceQuit,
  toldToQuit,
  askedAgainInAnHour,
  askedBeforeForceQuit,
  askedToQuit,
  skippedWhileOpen,
  quitThenForceQuit,
  quit,
  ignore,
  ownUpdateTool,
  updatesWhenInstalled,
  updatesInBackground
};

// "Open. (Will be killed to update.)" and its kin.
[[nodiscard]] std::string_view behaviorText(DeferralInstallBehavior behavior);

}  // namespace corvane
