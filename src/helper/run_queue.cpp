#include "helper/run_queue.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

bool stagesOnly(const RunQueue::Run& run) { return run.request.labels.empty(); }

}  // namespace

std::optional<RunQueue::Ticket> RunQueue::removeWaitingStaging() {
  const auto staging = std::ranges::find_if(waiting_, stagesOnly);
  if (staging == waiting_.end()) return std::nullopt;
  const auto ticket = staging->ticket;
  waiting_.erase(staging);
  return ticket;
}

RunQueue::Ticket RunQueue::insert(std::vector<Run>::iterator place, ask::StartPatching request) {
  waiting_.insert(place, Run{.ticket = next_, .request = std::move(request)});
  return next_++;
}

RunQueue::Offer RunQueue::offer(ask::StartPatching request) {
  const bool staging = request.labels.empty();
  Offer offer{.ticket = std::nullopt, .replaced = staging ? removeWaitingStaging() : std::nullopt};
  if (waiting_.size() >= kWaitingRunsLimit) return offer;
  offer.ticket = insert(staging ? waiting_.end() : std::ranges::find_if(waiting_, stagesOnly), std::move(request));
  return offer;
}

RunQueue::Offer RunQueue::offerOwn(ask::StartPatching request) {
  const bool staging = request.labels.empty();
  Offer offer{.ticket = std::nullopt, .replaced = staging ? removeWaitingStaging() : std::nullopt};
  offer.ticket = insert(staging ? waiting_.end() : waiting_.begin(), std::move(request));
  return offer;
}

std::optional<RunQueue::Run> RunQueue::startNext() {
  if (running_ || waiting_.empty()) return std::nullopt;
  running_ = true;
  auto run = std::move(waiting_.front());
  waiting_.erase(waiting_.begin());
  return run;
}

std::vector<RunQueue::Ticket> RunQueue::dropWaiting() {
  std::vector<Ticket> tickets;
  for (const auto& run : std::exchange(waiting_, {})) tickets.push_back(run.ticket);
  return tickets;
}

}  // namespace corvane
