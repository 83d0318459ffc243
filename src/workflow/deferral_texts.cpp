#include "workflow/deferral_texts.h"

#include <fmt/format.h>

#include "base/localized.h"

namespace corvane {

namespace {

template <class... Args>
std::string worded(std::string_view literal, const Args&... args) {
  return fmt::format(fmt::runtime(localized(literal)), args...);
}

struct LimitWords {
  const Locale& locale;

  std::string operator()(const limit::CountOnly& limit) const {
    if (limit.count == 1) return localized("1 deferral remaining before the hard deadline.");
    return worded("{} deferrals remaining before the hard deadline.", locale.number(limit.count));
  }
  std::string operator()(const limit::DaysOnly& limit) const {
    if (limit.days == 1) return localized("1 day remaining before the hard deadline.");
    return worded("{} days remaining before the hard deadline.", locale.number(limit.days));
  }
  std::string operator()(const limit::Both& limit) const {
    const auto date = locale.mediumDateShortTime(limit.deadline);
    if (limit.deadlineIsNear) {
      if (limit.count == 1)
        return worded("Updates install by {}, or 1 deferral remaining, whichever comes first.", date);
      return worded("Updates install by {}, or {} deferrals remaining, whichever comes first.", date,
                    locale.number(limit.count));
    }
    if (limit.count == 1) return worded("1 deferral remaining, or until {}, whichever comes first.", date);
    return worded("{} deferrals remaining, or until {}, whichever comes first.", locale.number(limit.count), date);
  }
};

struct WatchpointWords {
  std::string_view remaining;
  bool focusNotifications;

  std::string operator()(const watchpoint::Enforcement&) const {
    return worded("Updates install automatically in {}", remaining);
  }
  std::string operator()(const watchpoint::DeferralReminder&) const {
    return worded("Deferred — you'll be reminded in {}", remaining);
  }
  std::string operator()(const watchpoint::FocusDeferral&) const {
    return worded(focusNotifications ? "Focus deferral — next reminder in {}" : "Focus deferral — checking again in {}",
                  remaining);
  }
};

}  // namespace

std::string deferralDurationText(std::int64_t minutes, const Locale& locale) {
  constexpr std::int64_t kHour = 60;
  constexpr std::int64_t kDay = 24 * kHour;
  if (minutes < 0) return locale.duration(0, DurationUnit::day);
  if (minutes % kDay == 0) return locale.duration(minutes / kDay, DurationUnit::day);
  if (minutes % kHour == 0) return locale.duration(minutes / kHour, DurationUnit::hour);
  return locale.duration(minutes, DurationUnit::minute);
}

std::string limitSummaryText(const DeferralLimitSummary& summary, const Locale& locale) {
  return std::visit(LimitWords{locale}, summary);
}

std::string hardDeadlineText(std::optional<HardDeadlineTrigger> trigger) {
  return localized(trigger ? displayText(*trigger) : "The deadline has passed.");
}

std::string hardDeadlineText(const DeferralInfo& info, const CorvaneConfiguration& config, Date now) {
  return hardDeadlineText(info.hardDeadlineTrigger(
      config.deadlineCountHard, config.deadlineDaysHard ? info.hardDeferralDate : std::nullopt, now));
}

std::string watchpointText(const PendingWatchpoint& watchpoint, std::string_view remaining, bool focusNotifications) {
  return std::visit(WatchpointWords{.remaining = remaining, .focusNotifications = focusNotifications}, watchpoint);
}

}  // namespace corvane
