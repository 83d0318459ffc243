// What follows an Update All that ended with errors. Decides only.
#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

#include "core/records/app_info.h"

namespace corvane {

struct PatchErrorFollowUp {
  struct RetryAfterMinutes {
    std::int64_t minutes;
    friend bool operator==(const RetryAfterMinutes&, const RetryAfterMinutes&) = default;
  };
  struct MarkCycleComplete {
    friend bool operator==(const MarkCycleComplete&, const MarkCycleComplete&) = default;
  };
  using Decision = std::variant<RetryAfterMinutes, MarkCycleComplete>;

  [[nodiscard]] static Decision forUpdateAll(bool completesPatchingOnError, std::int64_t deferralTimerErrorMinutes);

  // The attempted labels, in their order, that the helper's message names behind "Failed: ", as whole words:
  // "zoom" is not found in "zoomclient". None when the message names nothing so.
  [[nodiscard]] static Labels erroredLabels(std::string_view message, const Labels& attempted);
};

}  // namespace corvane
