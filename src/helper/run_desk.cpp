#include "helper/run_desk.h"

#include <fmt/format.h>

#include <utility>

#include "helper/brief_labels.h"

namespace corvane {
namespace {

RunReport refusal(HelperErrorCode code, std::string text) {
  return {.outcomes = {}, .error = helperError(code, std::move(text))};
}

RunReport stoppingReport() { return refusal(HelperErrorCode::stopping, "The helper is stopping"); }

}  // namespace

RunDesk::RunDesk(Services services) : s_(std::move(services)), log_(s_.log, "CorvaneRootHelper") {}

RunDesk::~RunDesk() {
  for (auto& [ticket, waiting] : waiting_) waiting.done.abandon();
}

void RunDesk::ask(ask::StartPatching request, Completion<Result<PatchRunAnswer>> done) {
  Waiting waiting{.run = {.order = {.labels = request.labels}, .alsoStageLabels = request.alsoStageLabels},
                  .done = [done = std::move(done)](const RunReport& report) mutable { done(answerOf(report)); }};
  if (stopping_) return waiting.done(stoppingReport());
  makeWayFor(request.labels);
  settleOffer(queue_.offer(std::move(request)), std::move(waiting));
}

void RunDesk::askOwn(OwnRun run, Completion<RunReport> done) {
  if (stopping_) return done(stoppingReport());
  makeWayFor(run.order.labels);
  const auto offer = queue_.offerOwn({.labels = run.order.labels, .alsoStageLabels = run.alsoStageLabels});
  settleOffer(offer, {.run = std::move(run), .done = std::move(done)});
}

// A download may take an hour, and somebody waits for an install.
void RunDesk::makeWayFor(const Labels& install) {
  if (!install.empty() && staging_ && waiting_.at(*staging_).run.order.labels.empty())
    s_.stager.stop("it makes way for an install");
}

void RunDesk::settleOffer(const RunQueue::Offer& offer, Waiting waiting) {
  if (offer.replaced)
    answer(*offer.replaced, refusal(HelperErrorCode::replaced, "A newer staging request took the place of this one"));
  if (!offer.ticket) {
    log_.warning("Refused a run: too many wait already.");
    return waiting.done(
        refusal(HelperErrorCode::busy, fmt::format("The helper is busy: {} runs wait already", kWaitingRunsLimit)));
  }
  waiting_.emplace(*offer.ticket, std::move(waiting));
  startNext();
}

void RunDesk::startNext() {
  const auto next = queue_.startNext();
  if (!next) return;
  auto& run = waiting_.at(next->ticket).run;
  run.begins();
  auto& stage = run.alsoStageLabels;
  if (stage.empty()) return install(next->ticket);
  log_.info(fmt::format("Staging is asked for {} label(s): {}.", stage.size(), brief(stage)));
  staging_ = next->ticket;
  s_.stager.stage(std::move(stage), lifeline_.guard([this, ticket = next->ticket] {
    staging_.reset();
    install(ticket);
  }));
}

void RunDesk::install(RunQueue::Ticket ticket) {
  if (stopping_) return ended(ticket, stoppingReport());
  auto& order = waiting_.at(ticket).run.order;
  if (order.labels.empty()) return ended(ticket, {});
  s_.runner.run(std::move(order), lifeline_.guard([this, ticket](RunReport report) {
    s_.runEnded(report);
    ended(ticket, std::move(report));
  }));
}

PatchProgressInfo RunDesk::progress() const {
  if (!staging_) return s_.runner.progress();
  const auto& labels = waiting_.at(*staging_).run.order.labels;
  if (labels.empty()) return {};
  return {
      .isActive = true, .currentLabel = labels.front().text, .totalLabels = static_cast<std::int64_t>(labels.size())};
}

void RunDesk::ended(RunQueue::Ticket ticket, RunReport report) {
  queue_.finished();
  answer(ticket, std::move(report));
  if (!stopping_) startNext();
}

void RunDesk::answer(RunQueue::Ticket ticket, RunReport report) {
  auto found = waiting_.extract(ticket);
  if (!found.empty()) found.mapped().done(std::move(report));
}

void RunDesk::stop() {
  stopping_ = true;
  s_.stager.stop();
  s_.runner.stop();
  for (const auto ticket : queue_.dropWaiting()) answer(ticket, stoppingReport());
}

}  // namespace corvane
