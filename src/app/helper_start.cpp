#include "app/helper_start.h"

#include <utility>

namespace corvane {
namespace {

constexpr int kLooks = static_cast<int>(kHelperStartLimit / kHelperStartPoll);

std::unexpected<Error> notRunning(HelperStatus status) {
  return failure("CRVHelperStart", 1, helperStatusBannerText(status));
}

}  // namespace

void HelperStart::ensureRunning(Completion<Status> done) {
  done_ = std::move(done);
  const auto answer = [this](Status status) {
    main_.post(lifeline_.guard([this, status = std::move(status)] { done_(status); }));
  };
  if (installation_.isResetInFlight()) {
    staleHeartbeat_ = installation_.helperHeartbeatDate();
    return look(kLooks);
  }
  const bool knownToHaveEnded = installation_.launchctlPrintExitCode().value_or(0) != 0;
  if (installation_.isOperational() && !knownToHaveEnded) return answer({});

  staleHeartbeat_ = installation_.helperHeartbeatDate();
  const auto status = installation_.status();
  if (status == HelperStatus::notRegistered || status == HelperStatus::unknown) {
    if (const auto registered = installation_.registerHelper(); !registered) return answer(registered);
  } else if (status == HelperStatus::enabled) {
    (void)installation_.kickstartRegisteredDaemon();
  } else {
    return answer(notRunning(status));
  }
  look(kLooks);
}

void HelperStart::look(int looksLeft) {
  const bool beatsAnew = installation_.helperHeartbeatDate() != staleHeartbeat_;
  if (beatsAnew && installation_.isOperational()) return done_(Status{});
  if (looksLeft == 0) return done_(notRunning(installation_.status()));
  poll_ = main_.after(kHelperStartPoll, [this, looksLeft] { look(looksLeft - 1); });
}

}  // namespace corvane
