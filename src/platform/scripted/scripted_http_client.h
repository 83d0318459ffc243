// Web servers that answer to order.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/main_queue.h"
#include "platform/http_client.h"

namespace corvane {

class ScriptedHttpClient final : public HttpClient {
 public:
  explicit ScriptedHttpClient(MainQueue& main) : main_(main) {}
  ~ScriptedHttpClient() override {
    for (auto& waiting : waiting_) waiting.done.abandon();
  }

  // By address; any other fails as out of reach. An answer that takes longer than the limit fails at the limit.
  std::map<std::string, HttpAnswer, std::less<>> pages;
  Duration takes = Duration::zero();

  [[nodiscard]] const std::vector<HttpRequest>& requests() const { return requests_; }

  void send(HttpRequest request, Completion<Result<HttpAnswer>> done) override {
    const auto page = pages.find(request.url);
    auto answer = page != pages.end() && takes <= request.timeLimit
                      ? Result<HttpAnswer>(page->second)
                      : Result<HttpAnswer>(failure("CRVHttp", 1, "No answer from " + request.url));
    const auto limit = request.timeLimit;
    requests_.push_back(std::move(request));
    const auto place = waiting_.insert(waiting_.end(), Waiting{.done = std::move(done)});
    place->answer = main_.after(std::min(takes, limit), [this, place, answer = std::move(answer)] {
      auto answered = std::move(*place);
      waiting_.erase(place);
      answered.done(answer);
    });
  }

  // Into the real folder that is named.
  void download(HttpRequest request, std::filesystem::path file, std::uint64_t sizeLimit,
                Completion<Result<HttpAnswer>> done) override {
    send(std::move(request), [file = std::move(file), sizeLimit, done = std::move(done)](auto answer) mutable {
      if (answer && answer->status / 100 == 2) {
        if (answer->body.size() > sizeLimit) return done(failure("CRVHttp", 2, "The answer is too large"));
        std::ofstream(file, std::ios::binary) << std::exchange(answer->body, {});
      }
      done(std::move(answer));
    });
  }

 private:
  struct Waiting {
    Completion<Result<HttpAnswer>> done;
    Lease answer;
  };

  MainQueue& main_;
  std::vector<HttpRequest> requests_;
  std::list<Waiting> waiting_;
};

}  // namespace corvane
