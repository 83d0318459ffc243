#include "programs/user/interruption.h"

#include <signal.h>

#include <cstdio>

#include "platform/uv/uv_end_signals.h"

namespace corvane {

Interruption::~Interruption() {
  if (!signal_) return;
  std::fflush(stdout);
  ::raise(*signal_);
}

Waited Interruption::pump(UvMainLoop& loop, const std::function<bool()>& done, Duration limit) {
  std::optional<UvEndSignals> signals;
  signals.emplace(loop.loop(), std::initializer_list<int>{SIGINT, SIGTERM, SIGHUP}, [&](int number) {
    signal_ = number;
    signals.reset();
  });
  loop.pump([&] { return done() || signal_; }, limit);
  if (done()) return Waited::done;
  return signal_ ? Waited::interrupted : Waited::tooLong;
}

}  // namespace corvane
