// Whether an open deferral cycle has nothing left to defer.
#pragma once

#include <cstdint>

#include "core/records/deferral_records.h"

namespace corvane {

struct SatisfiedDeferralCycle {
  struct Facts {
    std::int64_t knownApps = 0;
    std::int64_t pendingUpdates = 0;
    std::int64_t inconclusiveChecks = 0;
  };

  // A deferral was counted, applications are known, none has an update pending, and no check was
  // inconclusive: with one that was, an update may merely be out of sight.
  [[nodiscard]] static constexpr bool shouldComplete(const DeferralInfo& info, const Facts& facts) {
    const bool open = info.focusDeferralCount > 0 || info.hardDeferralCount > 0;
    return open && facts.knownApps > 0 && facts.pendingUpdates <= 0 && facts.inconclusiveChecks <= 0;
  }
};

}  // namespace corvane
