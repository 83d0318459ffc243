#include "core/records/deferral_records.h"
#include "base/localizable.h"

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
      return toLocalize("Open. (Will be killed to update.)");
    case toldToQuitOrForceQuit:
      return toLocalize("Open. (You will be told to quit, or it will be force-quit.)");
    case toldToQuit:
      return toLocalize("Open. (You will be told to quit.)");
    case askedAgainInAnHour:
      return toLocalize("Open. (You will be asked to quit, or again in an hour.)");
    case askedBeforeForceQuit:
      return toLocalize("Open. (You will be asked before it is force-quit.)");
    case askedToQuit:
      return toLocalize("Open. (You will be asked to quit.)");
    case skippedWhileOpen:
      return toLocalize("Open. (Will be skipped while it is open.)");
    case quitThenForceQuit:
      return toLocalize("Open. (Will be quit, then force-quit, to update.)");
    case quit:
      return toLocalize("Open. (Will be quit to update.)");
    case ignore:
      return toLocalize("Open. (Will update without quitting.)");
    case ownUpdateTool:
      return toLocalize("Open. (Will use its own update tool.)");
    case updatesWhenInstalled:
      return toLocalize("Closed. (Will update when updates are installed.)");
    case updatesInBackground:
      return toLocalize("Closed. (Will update in the background.)");
  }
  std::unreachable();
}

}  // namespace corvane
