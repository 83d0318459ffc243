#include "core/policies/patching_cadence_manager.h"

#include <algorithm>

#include "core/policies/business_hours_gate.h"
#include "core/preferences/configuration.h"

namespace corvane {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::weekday;
using std::chrono::year_month;
using std::chrono::year_month_day;

PatchingCadenceSettings sanitized(PatchingCadenceSettings settings) {
  if (settings.patchWeekStartDay < 1 || settings.patchWeekStartDay > 7) settings.patchWeekStartDay = 2;
  if (settings.daysUntilReset < 1) settings.daysUntilReset = 7;
  settings.daysUntilReset = std::min<std::int64_t>(settings.daysUntilReset, 366);
  return settings;
}

PatchingCadenceSettings settingsOf(const CorvaneConfiguration& configuration) {
  return {.patchWeekStartDay = configuration.patchWeekStartDay,
          .daysUntilReset = configuration.daysUntilReset,
          .monthlyPatchingCadenceEnabled = configuration.monthlyPatchingCadenceEnabled,
          .monthlyPatchingCadenceOrdinalValue = configuration.monthlyPatchingCadenceOrdinalValue,
          .monthlyPatchingCadenceWeekdayIndex = configuration.monthlyPatchingCadenceWeekdayIndex};
}

weekday chosenWeekday(const PatchingCadenceSettings& settings) {
  if (settings.monthlyPatchingCadenceEnabled)
    return weekday(static_cast<unsigned>(settings.monthlyPatchingCadenceWeekdayIndex));
  return weekday(static_cast<unsigned>(settings.patchWeekStartDay - 1));
}

}  // namespace

PatchingCadenceManager::PatchingCadenceManager(PatchingCadenceSettings settings, Calendar calendar)
    : settings_(sanitized(settings)), calendar_(calendar) {}

PatchingCadenceManager::PatchingCadenceManager(const CorvaneConfiguration& configuration, Calendar calendar)
    : PatchingCadenceManager(settingsOf(configuration), calendar) {}

Date PatchingCadenceManager::startOn(sys_days day) const { return calendar_.at(year_month_day(day), 0s); }

sys_days PatchingCadenceManager::dayOf(Date date) const { return sys_days(calendar_.local(date).day); }

sys_days PatchingCadenceManager::monthlyStart(year_month month) const {
  const auto day = chosenWeekday(settings_);
  const auto index = static_cast<unsigned>(settings_.monthlyPatchingCadenceOrdinalValue) + 1;
  const bool takesLast = settings_.monthlyPatchingCadenceOrdinalValue == OrdinalValue::final;
  if (!takesLast && (month / day[index]).ok()) return sys_days(month / day[index]);
  return sys_days(month / day[std::chrono::last]);
}

Date PatchingCadenceManager::latestStart(Date date) const {
  const auto today = dayOf(date);
  if (!settings_.monthlyPatchingCadenceEnabled) return startOn(today - (weekday(today) - chosenWeekday(settings_)));
  const year_month_day day(today);
  const year_month month(day.year(), day.month());
  const auto thisMonth = monthlyStart(month);
  return startOn(thisMonth <= today ? thisMonth : monthlyStart(month - std::chrono::months(1)));
}

Date PatchingCadenceManager::firstStartAfter(Date date) const {
  const auto today = dayOf(date);
  if (!settings_.monthlyPatchingCadenceEnabled) {
    return startOn(today - (weekday(today) - chosenWeekday(settings_)) + days(7));
  }
  const year_month_day day(today);
  const year_month month(day.year(), day.month());
  const auto thisMonth = monthlyStart(month);
  return startOn(thisMonth > today ? thisMonth : monthlyStart(month + std::chrono::months(1)));
}

bool PatchingCadenceManager::isOnChosenWeekday(Date date) const {
  return weekday(dayOf(date)) == chosenWeekday(settings_);
}

std::optional<Date> PatchingCadenceManager::endOf(const CadenceState& state) const {
  if (state.nextCycleStartDate || !state.currentPatchingStartDate) return state.nextCycleStartDate;
  return nextCycleStart(*state.currentPatchingStartDate);
}

CadenceState PatchingCadenceManager::steppedTo(Date now, Date start) const {
  const days step(settings_.daysUntilReset);
  const auto first = dayOf(start);
  const auto passed = std::max(dayOf(now) - first, days(0));
  const auto day = first + (passed / step) * step;
  return {.currentPatchingStartDate = startOn(day), .nextCycleStartDate = startOn(day + step)};
}

Date PatchingCadenceManager::nextCycleStart(Date date) const {
  if (settings_.monthlyPatchingCadenceEnabled) return firstStartAfter(date);
  return startOn(dayOf(date) + days(settings_.daysUntilReset));
}

CadenceState PatchingCadenceManager::armedState(Date now) const {
  const auto start = latestStart(now);
  if (!settings_.monthlyPatchingCadenceEnabled) return steppedTo(now, start);
  return {.currentPatchingStartDate = start, .nextCycleStartDate = firstStartAfter(now)};
}

bool PatchingCadenceManager::shouldResetCycle(const CadenceState& state, Date now) const {
  if (!state.currentPatchingStartDate) return false;
  return *endOf(state) <= now;
}

CadenceState PatchingCadenceManager::rolledForwardCycle(const CadenceState& state, Date now) const {
  if (!state.currentPatchingStartDate) return armedState(now);
  const auto end = *endOf(state);
  auto rolled = state;
  rolled.nextCycleStartDate = end;
  if (end > now) return rolled;

  const auto from = startOn(dayOf(end));
  const bool follows = !settings_.monthlyPatchingCadenceEnabled && (isOnChosenWeekday(from) || !lastsWholeWeeks());
  if (follows) {
    rolled = steppedTo(now, from);
  } else {
    const auto start = std::max(latestStart(now), from);
    const bool configured = start == latestStart(now);
    rolled = {.currentPatchingStartDate = start,
              .nextCycleStartDate = configured ? nextCycleStart(start) : firstStartAfter(now)};
  }
  rolled.lastPatchingCompletionDate = state.lastPatchingCompletionDate;
  return rolled;
}

bool PatchingCadenceManager::isAnchorMalformed(const CadenceState& state) const {
  return state.currentPatchingStartDate && !calendar_.isStartOfDay(*state.currentPatchingStartDate);
}

bool PatchingCadenceManager::isPatchingCompleteForCurrentCycle(const CadenceState& state, Date now) const {
  if (!state.currentPatchingStartDate || !state.lastPatchingCompletionDate) return false;
  return *state.lastPatchingCompletionDate >= *state.currentPatchingStartDate && now < *endOf(state);
}

CadenceState PatchingCadenceManager::recordSuccessfulPatchRun(Date completedAt, const CadenceState& existing) const {
  auto state = existing.currentPatchingStartDate ? existing : freshInstallCycle(completedAt);
  state.nextCycleStartDate = endOf(state);
  state.lastPatchingCompletionDate = completedAt;
  return state;
}

std::vector<std::int64_t> PatchingCadenceManager::allowedDeferralMinutesForDeadlineDay(
    Date now, std::span<const std::int64_t> options, const std::optional<std::string>& patchingEndTime,
    const Calendar& calendar) {
  std::vector<std::int64_t> allowed(options.begin(), options.end());
  const auto end = patchingEndTime ? BusinessHoursGate::parseMinutesOfDay(*patchingEndTime) : std::nullopt;
  if (!end) return allowed;
  const auto left = calendar.at(calendar.local(now).day, std::chrono::minutes(*end)) - now;
  std::erase_if(allowed, [left](std::int64_t minutes) {
    return minutes >= std::chrono::ceil<std::chrono::minutes>(left).count();
  });
  return allowed;
}

}  // namespace corvane
