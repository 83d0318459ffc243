#include "helper/helper_service.h"

#include <fmt/format.h>

#include <set>
#include <utility>
#include <variant>

namespace corvane {
namespace {

template <class T>
std::string body(std::string_view id, const Result<T>& result) {
  return result ? composeAnswer(id, toJson(*result)) : composeRefusal(id, result.error());
}

Error stoppingError() { return helperError(HelperErrorCode::stopping, "The helper is stopping"); }

template <class... F>
struct Overloaded : F... {
  using F::operator()...;
};

}  // namespace

HelperService::HelperService(Services services) : s_(std::move(services)) {}

HelperService::Answer HelperService::counted(Answer answer) {
  ++open_;
  return [answer = std::move(answer), tell = lifeline_.guard([this] {
    --open_;
    tellAnswered();
  })](std::string text) mutable {
    answer(std::move(text));
    tell();
  };
}

void HelperService::tellAnswered() {
  if (open_ == 0 && answered_) s_.main.post(std::exchange(answered_, nullptr));
}

void HelperService::handle(HelperRequest request, Completion<std::string> given) {
  auto answer = counted(std::move(given));
  auto& id = request.id;
  if (stopping_) return answer(composeRefusal(id, stoppingError()));
  std::visit(Overloaded{
                 [&](const ask::Status&) { answer(composeAnswer(id, toJson(s_.status()))); },
                 [&](const ask::PatchingProgress&) { answer(composeAnswer(id, toJson(s_.desk.progress()))); },
                 [&](const ask::DiscoverInstalled&) { discover({}, std::move(id), std::move(answer)); },
                 [&](const ask::DiscoverWithUpdates&) {
                   discover({.latest = AppDiscoverer::Latest::fresh}, std::move(id), std::move(answer));
                 },
                 [&](ask::DiscoverForLabels& scoped) {
                   const auto latest =
                       scoped.includeLatestVersions ? AppDiscoverer::Latest::fresh : AppDiscoverer::Latest::no;
                   discover({.labels = LabelSet(scoped.labels.begin(), scoped.labels.end()), .latest = latest},
                            std::move(id), std::move(answer));
                 },
                 [&](ask::StartPatching& run) { queueRun(std::move(run), std::move(id), std::move(answer)); },
             },
             request.question);
}

void HelperService::discover(AppDiscoverer::Order order, std::string id, Answer answer) {
  if (openDiscoveries() > kOpenDiscoveriesLimit)
    return answer(composeRefusal(
        id, helperError(HelperErrorCode::busy,
                        fmt::format("The helper is busy: {} discoveries wait already", kOpenDiscoveriesLimit))));
  order.asker = AppDiscoverer::Asker::client;
  s_.discoverer.discover(std::move(order), [id = std::move(id), answer = std::move(answer)](Result<Apps> apps) mutable {
    answer(body(id, apps));
  });
}

void HelperService::queueRun(ask::StartPatching request, std::string id, Answer answer) {
  ++openRuns_;
  s_.desk.ask(std::move(request), [ended = lifeline_.guard([this] { --openRuns_; }), id = std::move(id),
                                   answer = std::move(answer)](const Result<PatchRunAnswer>& result) mutable {
    ended();
    answer(body(id, result));
  });
}

void HelperService::stop(Task answered) {
  stopping_ = true;
  answered_ = std::move(answered);
  s_.versions.stop();
  s_.discoverer.stop();
  s_.desk.stop();
  tellAnswered();
}

}  // namespace corvane
