#include "core/policies/deferral_manager.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <utility>

namespace corvane {

namespace {

constexpr std::int64_t kLongestDeferralMinutes = 10 * 366 * 24 * 60;
constexpr std::int64_t kMostDeadlineDays = 10 * 366;  // a limit beyond is held by the next cycle anyway

constexpr const char* kFocusCount = "FocusDeferralCount";
constexpr const char* kHardCount = "HardDeferralCount";
constexpr const char* kFocusDate = "FocusDeferralDate";
constexpr const char* kHardDate = "HardDeferralDate";

struct Side {
  std::int64_t count;
  std::optional<Date> date;
  std::optional<std::int64_t> maxCount;
  std::optional<std::int64_t> days;

  [[nodiscard]] bool reached(Date now) const {
    if (maxCount && count >= *maxCount) return true;
    return (maxCount || days) && date && *date <= now;
  }
};

Date inMinutes(Date now, std::int64_t minutes) {
  return now + std::chrono::minutes(std::clamp<std::int64_t>(minutes, 1, kLongestDeferralMinutes));
}

bool same(std::optional<Date> a, std::optional<Date> b) {
  return a.has_value() == b.has_value() && (!a || sameSecond(*a, *b));
}

}  // namespace

DeferralManager::DeferralManager(const CorvaneConfiguration& config, PreferenceManager& preferences, const Clock& clock,
                                 Calendar calendar)
    : hard_{.count = config.deadlineCountHard, .days = config.deadlineDaysHard},
      focus_{.count = config.deadlineCountFocus, .days = config.deadlineDaysFocus},
      preferences_(preferences),
      clock_(clock),
      calendar_(calendar) {}

DeferralInfo DeferralManager::getDeferralInfo() const { return preferences_.readDeferralInfo(); }

DeferralDeadlineStatus DeferralManager::checkDeadlines() const { return checkDeadlines(*preferences_.moment()); }

DeferralDeadlineStatus DeferralManager::checkDeadlines(const PreferenceMoment& stored) const {
  const auto now = clock_.now();
  const auto& info = stored.deferrals;
  const Side hard{info.hardDeferralCount, info.hardDeferralDate, hard_.count, hard_.days};
  if (hard.reached(now)) return DeferralDeadlineStatus::hardDeadlineReached;
  const Side focus{info.focusDeferralCount, stored.focusDeferralDate, focus_.count, focus_.days};
  return focus.reached(now) ? DeferralDeadlineStatus::focusDeadlineReached : DeferralDeadlineStatus::normal;
}

std::optional<Date> DeferralManager::hardDeadlineDate() const {
  return hard_.days ? getDeferralInfo().hardDeferralDate : std::nullopt;
}

std::optional<Date> DeferralManager::hardDeadlineDate(const PreferenceMoment& stored) {
  return stored.config->deadlineDaysHard ? stored.deferrals.hardDeferralDate : std::nullopt;
}

void DeferralManager::recordDeferral(std::int64_t minutes, DeferralEscalation /*escalation*/) {
  countOne(kHardCount);
  preferences_.writeNextAutoLaunch(inMinutes(clock_.now(), minutes), false, false);
}

void DeferralManager::recordAutomaticFocusDeferral(std::int64_t minutes) {
  countOne(kFocusCount);
  preferences_.writeNextAutoLaunch(inMinutes(clock_.now(), minutes), true, false);
}

// Read inside the change: another program that counts at the same time must lose nothing. A value of no use is 0.
void DeferralManager::countOne(const char* key) {
  preferences_.changeUser(key, [key](PlistDict& values) {
    auto& stored = values[key];
    const auto soFar = std::max<std::int64_t>(stored.integer().value_or(0), 0);
    stored = PlistValue(soFar < std::numeric_limits<std::int64_t>::max() ? soFar + 1 : soFar);
  });
}

void DeferralManager::resetDeferralCounts() {
  preferences_.changeUser("FocusDeferralCount, HardDeferralCount, FocusDeferralDate, HardDeferralDate",
                          [](PlistDict& values) {
                            for (const auto* key : {kFocusCount, kHardCount, kFocusDate, kHardDate}) values.erase(key);
                          });
}

void DeferralManager::seedDeadlineDatesFromAnchor(Date anchorDate, std::optional<Date> nextCycleStart) {
  const auto deadline = [&](std::optional<std::int64_t> limit) -> std::optional<Date> {
    if (!limit) return std::nullopt;
    const auto days = static_cast<int>(std::clamp<std::int64_t>(*limit, 0, kMostDeadlineDays));
    const auto date = calendar_.addDays(anchorDate, days);
    return nextCycleStart ? std::min(date, *nextCycleStart) : date;
  };
  const auto focus = deadline(focus_.days);
  const auto hard = deadline(hard_.days);
  const auto stored = preferences_.moment();
  if (same(focus, stored->focusDeferralDate) && same(hard, stored->deferrals.hardDeferralDate)) return;
  preferences_.changeUser("FocusDeferralDate, HardDeferralDate", [&](PlistDict& values) {
    for (const auto& [key, date] : {std::pair(kFocusDate, focus), std::pair(kHardDate, hard)}) {
      if (date)
        values.insert_or_assign(key, PlistValue(*date));
      else
        values.erase(key);
    }
  });
}

std::vector<std::int64_t> DeferralManager::allowedDeferralMinutes(std::span<const std::int64_t> options,
                                                                  std::optional<Date> hardDeadline, Date now) {
  std::vector<std::int64_t> allowed(options.begin(), options.end());
  if (!hardDeadline) return allowed;
  const auto left = std::chrono::ceil<std::chrono::minutes>(*hardDeadline - now).count();
  std::erase_if(allowed, [left](std::int64_t minutes) { return minutes >= left; });
  return allowed;
}

DeferralManager::ResumePresentation DeferralManager::resumePresentation(DeferralDeadlineStatus status,
                                                                        bool userIsInFocusMode) {
  switch (status) {
    case DeferralDeadlineStatus::hardDeadlineReached:
      return ResumePresentation::foregroundPrompt;
    case DeferralDeadlineStatus::focusDeadlineReached:
      return userIsInFocusMode ? ResumePresentation::silent : ResumePresentation::notification;
    case DeferralDeadlineStatus::normal:
      return ResumePresentation::notification;
  }
  return ResumePresentation::notification;
}

}  // namespace corvane
