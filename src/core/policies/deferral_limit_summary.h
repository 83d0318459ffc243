// What remains before the hard deadline, as a value that the prompt turns into a sentence.
#pragma once

#include <cstdint>
#include <optional>

#include "base/date.h"
#include "core/records/deferral_records.h"

namespace corvane {

struct DeferralLimitSummaryBuilder {
  // `countRemaining` is 0 when no count limit is set. Absent when neither limit is set. Days are begun days of
  // 24 hours, so that the last one is "1 day" to its end, with an hour's grace for a day with a clock
  // change; 0 once the date has passed. The flag of `both` is true when the date is less than 24 hours away.
  [[nodiscard]] static std::optional<DeferralLimitSummary> make(std::int64_t countRemaining,
                                                                std::optional<Date> deadline, Date now);
};

}  // namespace corvane
