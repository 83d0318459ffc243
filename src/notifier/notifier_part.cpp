#include "notifier/notifier_part.h"

namespace corvane {

namespace {

constexpr int kAttempts = 5;

}  // namespace

Result<NotifierPart> takePart(SoleProcess& sole, const std::string& encodedRequest) {
  for (int attempt = 1;; ++attempt) {
    const auto claimed = sole.claim();
    if (!claimed) return std::unexpected(claimed.error());
    if (*claimed) return NotifierPart::acts;
    const auto taken = sole.handOver(encodedRequest);
    if (taken) return NotifierPart::handedOver;
    if (taken.error().code != SoleProcessError::nobody || attempt == kAttempts) return std::unexpected(taken.error());
  }
}

}  // namespace corvane
