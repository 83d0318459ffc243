// Web servers that answer to order.
#pragma once

#include <algorithm>
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

  [[nodiscard]] const std::vector<std::string>& requests() const { return requests_; }

  void get(std::string url, Duration timeLimit, Completion<Result<HttpAnswer>> done) override {
    const auto page = pages.find(url);
    auto answer = page != pages.end() && takes <= timeLimit
                      ? Result<HttpAnswer>(page->second)
                      : Result<HttpAnswer>(failure("CRVHttp", 1, "No answer from " + url));
    requests_.push_back(std::move(url));
    const auto place = waiting_.insert(waiting_.end(), Waiting{.done = std::move(done)});
    place->answer = main_.after(std::min(takes, timeLimit), [this, place, answer = std::move(answer)] {
      auto answered = std::move(*place);
      waiting_.erase(place);
      answered.done(answer);
    });
  }

 private:
  struct Waiting {
    Completion<Result<HttpAnswer>> done;
    Lease answer;
  };

  MainQueue& main_;
  std::vector<std::string> requests_;
  std::list<Waiting> waiting_;
};

}  // namespace corvane
