// Counters and dates of the deferrals of a cycle, and the limits set on them. Keeps no state beside the
// preference store: make a fresh one whenever one is needed.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/calendar.h"
#include "base/date.h"
#include "core/preferences/configuration.h"
#include "core/preferences/preference_manager.h"
#include "core/records/deferral_records.h"
#include "core/records/enumerations.h"
#include "platform/clock.h"

namespace corvane {

// Any thread, as far as the preference store allows it. Every side (focus, hard) may have a count limit and a
// day limit; either that is reached ends the deferrals of its side.
class DeferralManager {
 public:
  enum class ResumePresentation { foregroundPrompt, notification, silent };

  // Of the configuration only the limits are taken.
  DeferralManager(const CorvaneConfiguration& config, PreferenceManager& preferences, const Clock& clock,
                  Calendar calendar);

  [[nodiscard]] DeferralInfo getDeferralInfo() const;

  // The hard side wins over the focus side. A count limit of 0 is reached at once. A stored date that has
  // passed counts for any limit that is set on its side; with no limit set a side never fires.
  [[nodiscard]] DeferralDeadlineStatus checkDeadlines() const;
  [[nodiscard]] DeferralDeadlineStatus checkDeadlines(const PreferenceMoment& stored) const;

  // The hard deadline for display; absent while DeadlineDaysHard is off or nothing was seeded.
  [[nodiscard]] std::optional<Date> hardDeadlineDate() const;
  [[nodiscard]] static std::optional<Date> hardDeadlineDate(const PreferenceMoment& stored);

  // A user's deferral: counts on the hard side, at whatever level it was made, and arms the next automatic
  // action that many minutes from now (at least one minute, at most ten years).
  void recordDeferral(std::int64_t minutes, DeferralEscalation escalation);

  // An automatic focus deferral: counts on the focus side only, and arms with the automatic flag.
  void recordAutomaticFocusDeferral(std::int64_t minutes);

  // Removes both counters and both dates. What is armed stays armed.
  void resetDeferralCounts();

  // Stores for each side the anchor plus its day limit in calendar days, at most `nextCycleStart`; removes
  // the stored date of a side whose day limit is off. Writes only what differs, so every tick may call it.
  void seedDeadlineDatesFromAnchor(Date anchorDate, std::optional<Date> nextCycleStart);

  // The options, in their order, that end before the hard deadline; all of them without one.
  [[nodiscard]] static std::vector<std::int64_t> allowedDeferralMinutes(std::span<const std::int64_t> options,
                                                                        std::optional<Date> hardDeadline, Date now);

  // How a deferral that has run out reaches the user: at the hard deadline by the prompt; at the focus
  // deadline by a notification, or not at all in focus; otherwise by a notification.
  [[nodiscard]] static ResumePresentation resumePresentation(DeferralDeadlineStatus status, bool userIsInFocusMode);

 private:
  // Absent: no limit.
  struct Limits {
    std::optional<std::int64_t> count;
    std::optional<std::int64_t> days;
  };
  void countOne(const char* key);

  Limits hard_;
  Limits focus_;
  PreferenceManager& preferences_;
  const Clock& clock_;
  Calendar calendar_;
};

}  // namespace corvane
