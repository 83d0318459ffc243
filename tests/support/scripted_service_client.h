// A root helper that answers when a test says so, in the order a test says.
#pragma once

#include <algorithm>
#include <functional>
#include <list>
#include <optional>
#include <utility>
#include <vector>

#include "base/main_queue.h"
#include "core/client/xpc_service_client.h"

namespace corvane {

// Calls are kept, in their order, until they are answered; each answer comes in a later turn. What a test leaves
// unanswered is abandoned at the end, as a helper that dies with its application would leave it.
class ScriptedServiceClient final : public XPCServiceClient {
 public:
  enum class Kind { installed, withUpdates, forLabels };
  struct Discovery {
    Kind kind = Kind::installed;
    Labels labels;
    std::int64_t generation = 0;  // of the model when the call was made
    Completion<Result<Apps>> done;
  };
  struct Run {
    Labels labels;
    Labels alsoStageLabels;
    Completion<Result<PatchRunAnswer>> done;
  };

  explicit ScriptedServiceClient(MainQueue& main) : main_(main) {}
  ~ScriptedServiceClient() override {
    for (auto& call : discoveries) call.done.abandon();
    for (auto& call : runs) call.done.abandon();
    for (auto& call : statuses) call.abandon();
  }

  std::list<Discovery> discoveries;
  std::list<Run> runs;
  std::list<Completion<Result<StatusInfo>>> statuses;
  int discoveriesAsked = 0;
  int runsAsked = 0;
  int progressAsked = 0;
  PatchProgressInfo progress;                // what each poll is answered with
  std::function<std::int64_t()> generation;  // told by the fixture

  void getStatus(Completion<Result<StatusInfo>> done) override { statuses.push_back(std::move(done)); }
  void discoverInstalledApps(Completion<Result<Apps>> done) override { ask(Kind::installed, {}, std::move(done)); }
  void discoverAppsWithUpdates(Completion<Result<Apps>> done) override { ask(Kind::withUpdates, {}, std::move(done)); }
  void discoverAppsForLabels(const Labels& labels, bool, Completion<Result<Apps>> done) override {
    ask(Kind::forLabels, labels, std::move(done));
  }
  void startPatching(const Labels& labels, const Labels& alsoStageLabels,
                     Completion<Result<PatchRunAnswer>> done) override {
    ++runsAsked;
    runs.push_back({.labels = labels, .alsoStageLabels = alsoStageLabels, .done = std::move(done)});
  }
  void getPatchingProgress(Completion<PatchProgressInfo> done) override {
    ++progressAsked;
    main_.post([done = std::move(done), info = progress]() mutable { done(info); });
  }

  void answerDiscovery(Result<Apps> answer, std::size_t index = 0) { answerAt(discoveries, index, std::move(answer)); }
  void answerRun(Result<PatchRunAnswer> answer, std::size_t index = 0) { answerAt(runs, index, std::move(answer)); }

 private:
  void ask(Kind kind, Labels labels, Completion<Result<Apps>> done) {
    ++discoveriesAsked;
    discoveries.push_back({.kind = kind,
                           .labels = std::move(labels),
                           .generation = generation ? generation() : 0,
                           .done = std::move(done)});
  }

  template <class Call, class Answer>
  void answerAt(std::list<Call>& calls, std::size_t index, Answer answer) {
    const auto call = std::next(calls.begin(), static_cast<std::ptrdiff_t>(index));
    auto done = std::move(call->done);
    calls.erase(call);
    main_.post([done = std::move(done), answer = std::move(answer)]() mutable { done(std::move(answer)); });
  }

  MainQueue& main_;
};

}  // namespace corvane
