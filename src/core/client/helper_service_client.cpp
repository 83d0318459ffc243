#include "core/client/helper_service_client.h"

namespace corvane {
namespace {

// A completion that waits inside the call of another one: who gives that one up gives up both.
template <class T>
class Within {
 public:
  explicit Within(Completion<T> done) : done_(std::move(done)) {}
  Within(Within&&) noexcept = default;
  ~Within() { done_.abandon(); }

  void operator()(T answer) { done_(std::move(answer)); }

 private:
  Completion<T> done_;
};

}  // namespace

template <class T>
void HelperServiceClient::send(HelperQuestion question, Result<T> (*read)(const JsonValue&),
                               Completion<Result<T>> done) {
  auto id = entropy_.uuid().text();
  auto body = composeRequest({.id = id, .question = std::move(question)});
  channel_.request(std::move(body),
                   [id = std::move(id), read, done = Within(std::move(done))](Result<std::string> answer) mutable {
                     if (!answer) return done(std::unexpected(std::move(answer.error())));
                     auto result = parseAnswer(*answer, id);
                     if (!result) return done(std::unexpected(std::move(result.error())));
                     done(read(*result));
                   });
}

void HelperServiceClient::getStatus(Completion<Result<StatusInfo>> done) {
  send(ask::Status{}, &statusInfoFromJson, std::move(done));
}

void HelperServiceClient::discoverInstalledApps(Completion<Result<Apps>> done) {
  send(ask::DiscoverInstalled{}, &appsFromJson, std::move(done));
}

void HelperServiceClient::discoverAppsWithUpdates(Completion<Result<Apps>> done) {
  send(ask::DiscoverWithUpdates{}, &appsFromJson, std::move(done));
}

void HelperServiceClient::discoverAppsForLabels(const Labels& labels, bool includeLatestVersions,
                                                Completion<Result<Apps>> done) {
  send(ask::DiscoverForLabels{.labels = labels, .includeLatestVersions = includeLatestVersions}, &appsFromJson,
       std::move(done));
}

void HelperServiceClient::startPatching(const Labels& labels, const Labels& alsoStageLabels,
                                        Completion<Result<PatchRunAnswer>> done) {
  send(ask::StartPatching{.labels = labels, .alsoStageLabels = alsoStageLabels}, &patchRunAnswerFromJson,
       std::move(done));
}

void HelperServiceClient::getPatchingProgress(Completion<PatchProgressInfo> done) {
  send(
      ask::PatchingProgress{}, &patchProgressFromJson,
      Completion<Result<PatchProgressInfo>>([done = Within(std::move(done))](Result<PatchProgressInfo> answer) mutable {
        done(answer.value_or(PatchProgressInfo{}));
      }));
}

}  // namespace corvane
