#include "core/records/deferral_records.h"

#include <utility>

namespace corvane {

std::optional<HardDeadlineTrigger> DeferralInfo::hardDeadlineTrigger(std::optional<std::int64_t> maxCount,
                                                                     std::optional<Date> deadlineDate, Date now) const {
  const bool byCount = maxCount && hardDeferralCount >= *maxCount;
  const bool byDate = deadlineDate && *deadlineDate <= now;
  if (byCount && byDate) return HardDeadlineTrigger::countAndDate;
  if (byCount) return HardDeadlineTrigger::count;
  if (byDate) return HardDeadlineTrigger::date;
  return std::nullopt;
}

std::string_view behaviorText(DeferralInstallBehavior behavior) {
  using enum DeferralInstallBehavior;
  switch (behavior) {
    case killed:
      return "Open. (Will be killed to update.)";
    case toldToQuitOrForceQuit:
      return "Open. (You will be told to quit, or it will be force-quit.)";
    case toldToQuit:
      return "Open. (You will be told to quit.)";
    case askedAgainInAnHour:
      return "Open. (You will be asked to quit, or again in an hour.)";
    case askedBeforeForceQuit:
      return "Open. (You will be asked before it is force-quit.)";
    case askedToQuit:
      return "Open. (You will be asked to quit.)";
    case skippedWhileOpen:
      return "Open. (Will be skipped while it is open.)";
    case quitThenForceQuit:
      return "Open. (Will be quit, then force-quit, to update.)";
    case quit:
      return "Open. (Will be quit to update.)";
    case ignore:
      return "Open. (Will update without quitting.)";
    case ownUpdateTool:
      return "Open. (Will use its own update tool.)";
    case updatesWhenInstalled:
      return "Closed. (Will update when updates are installed.)";
    case updatesInBackground:
      return "Closed. (Will update in the background.)";
  }
  std::unreachable();
}

}  // namespace corvane
