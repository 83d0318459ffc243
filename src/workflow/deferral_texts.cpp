#include "workflow/deferral_texts.h"

#include "base/localized.h"

namespace corvane {

namespace {

struct LimitWords {
  const Locale& locale;

  std::string operator()(const limit::CountOnly& limit) const {
    if (limit.count == 1) return localized("1 deferral remaining before the hard deadline.");
    return localized("{} deferrals remaining before the hard deadline.", locale.number(limit.count));
  }
  std::string operator()(const limit::DaysOnly& limit) const {
    if (limit.days == 1) return localized("1 day remaining before the hard deadline.");
    return localized("{} days remaining before the hard deadline.", locale.number(limit.days));
  }
  std::string operator()(const limit::Both& limit) const {
    const auto date = locale.mediumDateShortTime(limit.deadline);
    if (limit.deadlineIsNear) {
      if (limit.count == 1)
        return localized("Updates install by {}, or 1 deferral remaining, whichever comes first.", date);
      return localized("Updates install by {}, or {} deferrals remaining, whichever comes first.", date,
                       locale.number(limit.count));
    }
    if (limit.count == 1) return localized("1 deferral remaining, or until {}, whichever comes first.", date);
    return localized("{} deferrals remaining, or until {}, whichever comes first.", locale.number(limit.count), date);
  }
};

struct WatchpointWords {
  std::string_view remaining;
  bool focusNotifications;

  std::string operator()(const watchpoint::Enforcement&) const {
    return localized("Updates install automatically in {}", remaining);
  }
  std::string operator()(const watchpoint::DeferralReminder&) const {
    return localized("Deferred — you'll be reminded in {}", remaining);
  }
  std::string operator()(const watchpoint::FocusDeferral&) const {
    return localized(focusNotifications ? toLocalize("Focus deferral — next reminder in {}")
                                        : toLocalize("Focus deferral — checking again in {}"),
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
  return localized(trigger ? displayText(*trigger) : toLocalize("The deadline has passed."));
}

std::string hardDeadlineText(const DeferralInfo& info, const CorvaneConfiguration& config, Date now) {
  return hardDeadlineText(info.hardDeadlineTrigger(
      config.deadlineCountHard, config.deadlineDaysHard ? info.hardDeferralDate : std::nullopt, now));
}

std::string watchpointText(const PendingWatchpoint& watchpoint, std::string_view remaining, bool focusNotifications) {
  return std::visit(WatchpointWords{.remaining = remaining, .focusNotifications = focusNotifications}, watchpoint);
}

}  // namespace corvane
