// In which order patch runs go: pure decisions over tickets. It starts nothing and answers nobody.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "core/client/helper_messages.h"

namespace corvane {

// How many requests may wait behind the run in hand before the next is told that the helper is busy. A person
// makes one at a time; eight bounds what a broken client can pile up.
inline constexpr std::size_t kWaitingRunsLimit = 8;

// One run at a time, in the order asked behind the helper's own, a staging (a request without labels to install) behind
// the installs. Of stagings only the newest waits, whoever asked for it. Main thread.
class RunQueue {
 public:
  using Ticket = std::uint64_t;
  struct Run {
    Ticket ticket = 0;
    ask::StartPatching request;
    friend bool operator==(const Run&, const Run&) = default;
  };

  // `ticket` is absent when as many wait as may. `replaced` is the staging that the new one takes the place of,
  // and has left the queue.
  struct Offer {
    std::optional<Ticket> ticket;
    std::optional<Ticket> replaced;
    friend bool operator==(const Offer&, const Offer&) = default;
  };
  [[nodiscard]] Offer offer(ask::StartPatching request);

  // The helper's own, which always finds its place: an install goes first.
  [[nodiscard]] Offer offerOwn(ask::StartPatching request);

  // The run to start now, which is then in hand; absent while one is, or when none waits.
  [[nodiscard]] std::optional<Run> startNext();

  // The run in hand has ended.
  void finished() { running_ = false; }

  // Empties the queue and gives whose tickets it held, in order.
  [[nodiscard]] std::vector<Ticket> dropWaiting();

  [[nodiscard]] bool running() const { return running_; }
  [[nodiscard]] std::size_t waiting() const { return waiting_.size(); }

 private:
  [[nodiscard]] std::optional<Ticket> removeWaitingStaging();
  Ticket insert(std::vector<Run>::iterator place, ask::StartPatching request);

  std::vector<Run> waiting_;  // in the order in which they start
  Ticket next_ = 1;
  bool running_ = false;
};

}  // namespace corvane
